"""Builds the extension zorv2_lbx._core with the repository's own CMake build
(the target zorv2_lbx_core: the library, the modding core and the binding),
for the Python that runs pip, and puts it into the package."""
import os
import pathlib
import shutil
import subprocess
import sys

import pybind11
from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        build = pathlib.Path(self.build_temp).resolve() / "cmake"
        configure = [
            "cmake", "-S", str(ROOT), "-B", str(build), "-DCMAKE_BUILD_TYPE=Release",
            f"-DPython3_EXECUTABLE={sys.executable}", f"-Dpybind11_DIR={pybind11.get_cmake_dir()}",
            "-DZORV2_LBX_PYTHON=ON", "-DZORV2_LBX_TESTS=OFF", "-DZORV2_LBX_EXAMPLES=OFF",
        ]
        if shutil.which("ninja"):
            configure += ["-G", "Ninja"]
        subprocess.run(configure, check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(min(2, os.cpu_count() or 1)))
        subprocess.run(["cmake", "--build", str(build), "--target", "zorv2_lbx_core", "-j", jobs], check=True)
        built = next((build / "python" / "zorv2_lbx").glob("_core*.so"))
        target = pathlib.Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(built, target)


setup(ext_modules=[Extension("zorv2_lbx._core", sources=[])], cmdclass={"build_ext": CMakeBuild})
