# Installs the Debian packages a command needs, if any are missing.
#   trov_require_packages PACKAGE...
# Runs apt-get as root, or through sudo; never prompts.
trov_require_packages() {
  local missing=() pkg
  for pkg in "$@"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "installing: ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "need root or sudo to install: ${missing[*]}" >&2; return 1; }
    sudo=(sudo)
  fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo[@]}" apt-get update -q
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# What a plain build of the library and its tool needs (the tool parses its
# arguments with CLI11 and reads and writes JSON with nlohmann-json, both
# header-only, and reads pcap and pcapng captures through libpcap; the library
# itself needs none of them).
TROV_BUILD_PACKAGES=(cmake ninja-build g++ make binutils libcli11-dev nlohmann-json3-dev libpcap-dev)
# What the full test run needs on top: clang with its sanitizer runtimes,
# GoogleTest's sources, Google Benchmark, the mingw-w64 cross compiler and
# Wine to run the Windows build, pkg-config for the installed-package check,
# lld and llvm (lld-link, llvm-dlltool) to link a host the Microsoft way, and
# protobuf, the mainstream codec the benchmarks compare against; tcpdump and
# python3 make a real capture of packets over loopback for the capture test.
TROV_TEST_PACKAGES=(clang libclang-rt-dev googletest libbenchmark-dev pkg-config
                    g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 wine64
                    lld llvm protobuf-compiler libprotobuf-dev tcpdump python3)
# The Python package (python/): Debian's Python with its headers, pybind11
# (its headers for CMake, its Python package for pip's build), setuptools, pip
# and venv to install it, and pytest with hypothesis to test it.
TROV_PYTHON_PACKAGES=(python3-dev pybind11-dev python3-pybind11 python3-setuptools python3-pip python3-venv
                      python3-pytest python3-hypothesis)
