"""Builds trovcodec with pip: `pip install ./python` from a TrovCodec source tree.

The module is compiled from python/src and the trov tool's core (tools/trov
and tools/describe beside this folder) and linked with an installed
TrovCodec library, found in this order:

1. pkg-config (``trovcodec``; PKG_CONFIG_PATH, or TROVCODEC_PREFIX, names
   where an install put ``lib/pkgconfig``);
2. CMake's package (``find_package(TrovCodec 1.0 CONFIG)``; CMAKE_PREFIX_PATH
   or TROVCODEC_PREFIX).

With Debian's packages (python3-pybind11, python3-setuptools, nlohmann-json3-dev)
build without isolation: ``pip install --no-build-isolation ./python``.
TROV_BUILD_JOBS sets how many files compile at once (2 by default).
"""

import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from setuptools import setup

try:
    from pybind11.setup_helpers import ParallelCompile, Pybind11Extension, build_ext
except ImportError:
    sys.exit("trovcodec: pybind11's Python package is needed to build: apt-get install python3-pybind11 "
             "(then pip install --no-build-isolation ./python)")

HERE = Path(__file__).resolve().parent
TOOLS = HERE.parent / "tools"


def fail(message):
    sys.exit(f"trovcodec: {message}")


def run(command, **kwargs):
    return subprocess.run(command, check=True, capture_output=True, text=True, **kwargs).stdout


def search_paths():
    """PKG_CONFIG_PATH and CMAKE_PREFIX_PATH with TROVCODEC_PREFIX in front."""
    env = dict(os.environ)
    prefix = env.get("TROVCODEC_PREFIX")
    if prefix:
        pc = [str(p) for p in Path(prefix).glob("lib*/**/pkgconfig")]
        env["PKG_CONFIG_PATH"] = os.pathsep.join(pc + [env.get("PKG_CONFIG_PATH", "")]).strip(os.pathsep)
        env["CMAKE_PREFIX_PATH"] = os.pathsep.join([prefix, env.get("CMAKE_PREFIX_PATH", "")]).strip(os.pathsep)
    return env


def from_pkg_config(env):
    """The library through pkg-config, or None."""
    if shutil.which("pkg-config") is None:
        return None
    try:
        cflags = shlex.split(run(["pkg-config", "--cflags", "trovcodec"], env=env))
        libs = shlex.split(run(["pkg-config", "--libs", "trovcodec"], env=env))
    except subprocess.CalledProcessError:
        return None
    found = {"include_dirs": [], "library_dirs": [], "libraries": [], "define_macros": []}
    for flag in cflags:
        if flag.startswith("-I"):
            found["include_dirs"].append(flag[2:])
        elif flag.startswith("-D"):
            name, _, value = flag[2:].partition("=")
            found["define_macros"].append((name, value or None))
    for flag in libs:
        if flag.startswith("-L"):
            found["library_dirs"].append(flag[2:])
        elif flag.startswith("-l"):
            found["libraries"].append(flag[2:])
    found["how"] = "pkg-config"
    return found


PROBE = """cmake_minimum_required(VERSION 3.21)
project(trovcodec_probe CXX)
find_package(TrovCodec 1.0 CONFIG REQUIRED)
file(GENERATE OUTPUT found.txt CONTENT
"include=$<TARGET_PROPERTY:TrovCodec::TrovCodec,INTERFACE_INCLUDE_DIRECTORIES>
defines=$<TARGET_PROPERTY:TrovCodec::TrovCodec,INTERFACE_COMPILE_DEFINITIONS>
library=$<TARGET_LINKER_FILE:TrovCodec::TrovCodec>
")
"""


def from_cmake(env):
    """The library through its CMake package, or None."""
    if shutil.which("cmake") is None:
        return None
    with tempfile.TemporaryDirectory() as work:
        Path(work, "CMakeLists.txt").write_text(PROBE)
        try:
            run(["cmake", "-S", work, "-B", os.path.join(work, "b")], env=env)
        except subprocess.CalledProcessError:
            return None
        values = dict(line.split("=", 1) for line in Path(work, "b", "found.txt").read_text().splitlines() if "=" in line)
    library = Path(values["library"])
    name = re.sub(r"^lib", "", library.name.split(".")[0])
    return {
        "include_dirs": [d for d in values["include"].split(";") if d],
        "library_dirs": [str(library.parent)],
        "libraries": [name],
        "define_macros": [(d.partition("=")[0], d.partition("=")[2] or None)
                          for d in values["defines"].split(";") if d],
        "how": "CMake",
    }


def find_library():
    env = search_paths()
    found = from_pkg_config(env) or from_cmake(env)
    if found is None:
        fail("no installed TrovCodec found through pkg-config (trovcodec.pc) or CMake "
             "(TrovCodecConfig.cmake). Install the library first, e.g.\n"
             "  cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release && cmake --build build/release\n"
             "  cmake --install build/release --prefix /usr/local\n"
             "or point TROVCODEC_PREFIX (or PKG_CONFIG_PATH, CMAKE_PREFIX_PATH) at an install.")
    header = next((Path(d) / "TrovVersion.h" for d in found["include_dirs"] if (Path(d) / "TrovVersion.h").exists()),
                  None)
    if header is None:
        fail(f"the TrovCodec found through {found['how']} has no TrovVersion.h in {found['include_dirs']}")
    parts = dict(re.findall(r"#define TROV_VERSION_(MAJOR|MINOR|PATCH) (\d+)", header.read_text()))
    found["version"] = f"{parts['MAJOR']}.{parts['MINOR']}.{parts['PATCH']}"
    print(f"trovcodec: TrovCodec {found['version']} through {found['how']}: {found['include_dirs']}")
    return found


def tool_sources():
    """The trov tool's core: every tools/trov/*.cpp but main.cpp, and the record walk."""
    core = sorted(p for p in (TOOLS / "trov").glob("*.cpp") if p.name != "main.cpp")
    walk = TOOLS / "describe" / "RecordWalk.cpp"
    if not core or not walk.exists():
        fail(f"the trov tool's sources are not at {TOOLS}: build from a TrovCodec source tree "
             "(pip install ./python in the repository)")
    return [str(p) for p in core] + [str(walk)]


def json_include_dirs():
    """nlohmann-json's headers, where pkg-config knows a place other than the default."""
    try:
        return [f[2:] for f in shlex.split(run(["pkg-config", "--cflags-only-I", "nlohmann_json"])) if f.startswith("-I")]
    except (OSError, subprocess.CalledProcessError):
        return []


library = find_library()
ParallelCompile("TROV_BUILD_JOBS", default=2).install()

extension = Pybind11Extension(
    "trovcodec._trovcodec",
    sorted(str(p) for p in (HERE / "src").glob("*.cpp")) + tool_sources(),
    include_dirs=[str(HERE / "src"), str(TOOLS / "trov"), str(TOOLS / "describe")]
    + library["include_dirs"] + json_include_dirs(),
    library_dirs=library["library_dirs"],
    libraries=library["libraries"],
    runtime_library_dirs=library["library_dirs"],
    define_macros=library["define_macros"],
    cxx_std=20,
)

setup(
    name="trovcodec",
    version=library["version"],
    description="The TROV codec for Python: packets as the trov tool's JSON objects",
    long_description=(HERE.parent / "docs" / "python.md").read_text()
    if (HERE.parent / "docs" / "python.md").exists() else "",
    long_description_content_type="text/markdown",
    packages=["trovcodec"],
    package_data={"trovcodec": ["py.typed", "*.pyi"]},
    ext_modules=[extension],
    cmdclass={"build_ext": build_ext},
    python_requires=">=3.8",
    zip_safe=False,
)
