"""Builds the extension module with CMake, from the sources of the library around this folder, in build/python-package there."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "python-package"


def read_version():
    if not (ROOT / "qexclip").is_dir():
        sys.exit("qex: this folder alone cannot be built: it belongs to the sources of the library")
    return re.search(r"^ *VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE).group(1)


def pybind11_folder():
    """The CMake package of a pybind11 that pip installed; else CMake finds that of the system."""
    try:
        import pybind11
    except ImportError:
        return []
    return ["-Dpybind11_DIR=" + pybind11.get_cmake_dir()]


class BuildWithCMake(build_ext):
    def build_extension(self, extension):
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve()
        folder = BUILD / ("cmake-" + sys.implementation.cache_tag)
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG", "-DQEX_BUILD_PYTHON=ON", "-DQEX_BUILD_APP=OFF",
                   "-DQEX_BUILD_TESTS=OFF", "-DQEX_INSTALL=OFF", "-DPython_EXECUTABLE=" + sys.executable]  # fmt: skip
        extra = os.environ.get("CMAKE_ARGS", "").split()
        subprocess.run(["cmake", *generator, "-S", ROOT, "-B", folder, *options, *pybind11_folder(), *extra], check=True)
        subprocess.run(["cmake", "--build", folder, "--target", "qex_python", "-j", str(os.cpu_count() or 1)], check=True)
        (built,) = (folder / "python" / "qex").glob("_core.*")
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(built, target)


version = read_version()
BUILD.mkdir(parents=True, exist_ok=True)
setup(
    version=version,
    packages=["qex"],
    package_dir={"": "src"},
    package_data={"qex": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("qex._core", [])],
    cmdclass={"build_ext": BuildWithCMake},
    options={"build": {"build_base": str(BUILD)}, "egg_info": {"egg_base": str(BUILD)}},
)
