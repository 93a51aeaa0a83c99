"""Shared set-up of the trovcodec suites.

The module under test is the one the runner names: TROVCODEC_EXPECT_DIR is
the directory trovcodec must come from (CMake's build sets it to its own
module; the pip check to the installed one), so that a module built one way
never passes for the other. TROV_TOOL is the trov tool to compare with (else
the one on PATH, else the golden files alone). HYPOTHESIS_PROFILE picks the
example counts: "ci" (the default) keeps them modest, "thorough" runs more.
"""

import os
import shutil
from pathlib import Path

import pytest
from hypothesis import HealthCheck, settings

import trovcodec

SOURCE_DIR = Path(__file__).resolve().parents[2]
EXAMPLES = SOURCE_DIR / "examples"

settings.register_profile("ci", max_examples=4, deadline=None, derandomize=True,
                          suppress_health_check=[HealthCheck.too_slow, HealthCheck.data_too_large,
                                                 HealthCheck.large_base_example])
settings.register_profile("thorough", max_examples=60, deadline=None,
                          suppress_health_check=[HealthCheck.too_slow, HealthCheck.data_too_large,
                                                 HealthCheck.large_base_example])
settings.load_profile(os.environ.get("HYPOTHESIS_PROFILE", "ci"))


def pytest_configure(config):
    expected = os.environ.get("TROVCODEC_EXPECT_DIR")
    actual = Path(trovcodec.__file__).resolve().parent
    if expected and actual != Path(expected).resolve():
        pytest.exit(f"trovcodec was imported from {actual}, not from {expected}", returncode=3)


@pytest.fixture(scope="session")
def trov_tool():
    """The trov tool's path, or None."""
    return os.environ.get("TROV_TOOL") or shutil.which("trov")
