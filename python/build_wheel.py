"""Uses CMake to build the wheel that pip installs. This script needs only Python's standard library, so pip has nothing
to download for the build. The compiler, CMake, Ninja and all libraries must be installed; see
packaging/debian_packages.sh.

The environment variable CMAKE_ARGS may contain further options for CMake. `pip install --config-settings
build-dir=FOLDER .` keeps the object files in FOLDER for the next build.
"""
import base64
import hashlib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

_SOURCE = pathlib.Path(__file__).resolve().parent.parent


def _version():
    header = (_SOURCE / "camera_library/lmlib64.h").read_text(encoding="utf-8")
    return re.search(r'define LMLIB_VERSION "([0-9.]+)"', header).group(1)


def _metadata():
    return (f"Metadata-Version: 2.1\nName: lmlib64\nVersion: {_version()}\n"
            "Summary: Draws calibration targets, finds them in pictures and calibrates cameras\n"
            "License: MIT\nRequires-Python: >=3.9\nRequires-Dist: numpy\n")


def _tag():
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{python}-{python}-" + re.sub("[-.]", "_", sysconfig.get_platform())


def _build_package(build, tree):
    options = {"CMAKE_BUILD_TYPE": "Release", "CMAKE_INSTALL_LIBDIR": "lmlib64", "LMCALTAB_PYTHON_DIRECTORY": ".",
               "LMCALTAB_PROGRAM": "OFF", "LMCALTAB_SHELL": "OFF", "LMCALTAB_READER": "ON",
               "LMCALTAB_CALIBRATION": "ON", "LMCALTAB_PYTHON": "ON", "LMCALTAB_TESTS": "OFF",
               "Python_EXECUTABLE": sys.executable}
    subprocess.check_call(["cmake", "-S", _SOURCE, "-B", build, "-G", "Ninja"] +
                          [f"-D{name}={value}" for name, value in options.items()] +
                          shlex.split(os.environ.get("CMAKE_ARGS", "")))
    subprocess.check_call(["cmake", "--build", build, "--target", "_lmlib64"])
    for component in ("python", "LmLib64"):
        subprocess.check_call(["cmake", "--install", build, "--prefix", tree, "--component", component, "--strip"])
    return sorted((tree / "lmlib64").iterdir())


def _info_directory():
    return f"lmlib64-{_version()}.dist-info"


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    """This hook of PEP 517 gives pip the metadata without a build. Returns the folder's name."""
    folder = pathlib.Path(metadata_directory) / _info_directory()
    folder.mkdir()
    (folder / "METADATA").write_text(_metadata(), encoding="utf-8")
    return folder.name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    """This hook of PEP 517 makes the wheel. Returns the wheel's name."""
    info = _info_directory()
    name = f"lmlib64-{_version()}-{_tag()}.whl"
    record = []
    build_directory = (config_settings or {}).get("build-dir")
    with tempfile.TemporaryDirectory() as folder, \
            zipfile.ZipFile(os.path.join(wheel_directory, name), "w", zipfile.ZIP_DEFLATED) as wheel:
        def add(path, contents):
            wheel.writestr(path, contents)
            digest = base64.urlsafe_b64encode(hashlib.sha256(contents).digest()).rstrip(b"=").decode()
            record.append(f"{path},sha256={digest},{len(contents)}\n")

        folder = pathlib.Path(folder)
        build = pathlib.Path(build_directory).absolute() if build_directory else folder / "build"
        for file in _build_package(build, folder / "tree"):
            add(f"lmlib64/{file.name}", file.read_bytes())
        for notice in ("LICENSE", "THIRD_PARTY_NOTICES.md"):
            add(f"{info}/{notice}", (_SOURCE / notice).read_bytes())
        add(f"{info}/METADATA", _metadata().encode())
        add(f"{info}/WHEEL", f"Wheel-Version: 1.0\nGenerator: build_wheel\nRoot-Is-Purelib: false\nTag: {_tag()}\n"
            .encode())
        wheel.writestr(f"{info}/RECORD", "".join(record) + f"{info}/RECORD,,\n")
    return name
