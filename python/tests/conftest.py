"""What the tests share: the lbx tool and the C++ frame checksums of the
build under test (CTest names them in the environment), and the sample
archives that `lbx sample` writes."""
import os
import pathlib
import subprocess

import pytest


def _tool(variable):
    path = os.environ.get(variable)
    if not path:
        pytest.skip(f"{variable} is not set: CTest names the build's programs")
    return path


@pytest.fixture(scope="session")
def lbx_tool():
    return _tool("LBX_TOOL")


@pytest.fixture(scope="session")
def frame_checksums():
    return _tool("LBX_FRAME_CHECKSUMS")


@pytest.fixture(scope="session")
def sample(tmp_path_factory, lbx_tool):
    """The folder of the five sample archives, made once."""
    folder = tmp_path_factory.mktemp("sample") / "archives"
    subprocess.run([lbx_tool, "sample", str(folder)], check=True, capture_output=True)
    return folder


@pytest.fixture
def run_lbx(lbx_tool):
    def run(*args):
        return subprocess.run([lbx_tool, *map(str, args)], capture_output=True, text=True)

    return run


ARCHIVES = ["FONTS.LBX", "INBOX.LBX", "CONFIRM.LBX", "SPHERSFX.LBX", "STARNAME.LBX"]


def sample_paths(folder: pathlib.Path):
    return [folder / name for name in ARCHIVES]
