"""Draws calibration targets, finds them in pictures and calibrates cameras.

    import lmlib64
    lmlib64.draw("flexible", size=(15, 9), grid_spacing=25, file="target.pdf")
    picture = lmlib64.draw("flexible", size=(15, 9), grid_spacing=25, image_size=1000)
    for reading in lmlib64.read_patterns(picture, grid_spacing=25):
        print(reading.image_points, reading.object_points)

Lengths are in millimetres. Image coordinates are in pixels, with the centre of the top-left pixel at (0, 0). Every
function may be called from any thread; long work runs without the interpreter's lock. A child process, forked or
spawned, starts with a new library, whose tree does not contain the nodes that the parent process wrote.
"""
import dataclasses
import json
import os
import typing

import numpy.typing

from . import _lmlib64
from ._lmlib64 import CalibrationImpossible

__all__ = ["Calibration", "CalibrationImpossible", "CommandFailed", "ParameterRefused", "Reading", "calibrate", "draw", "erase", "get",
           "plates", "read_patterns", "run", "set", "version"]

_File = typing.Union[str, "os.PathLike[str]"]
_Array = numpy.typing.NDArray[typing.Any]
_STRING, _OBJECT, _ARRAY, _BINARY = 3, 5, 6, 7
_TYPES = {"custom": "SingleCustom", "flexible": "Flexible", "assembly": "Assembly", "halcon": None}


class CommandFailed(Exception):
    """A command of the library failed. The text comes from the library; ``symbol`` is a short name of the reason."""

    def __init__(self, symbol: str, text: str) -> None:
        super().__init__(text)
        self.symbol = symbol

    def __reduce__(self) -> typing.Tuple[typing.Any, ...]:
        return CommandFailed, (self.symbol, str(self))


class ParameterRefused(CommandFailed, ValueError):
    """The library refuses a parameter."""

    def __reduce__(self) -> typing.Tuple[typing.Any, ...]:
        return ParameterRefused, (self.symbol, str(self))


def get(path: str = "") -> typing.Any:
    """Returns the value of a node of the library's tree. An image becomes a numpy array."""
    kind = _lmlib64.get_type(path)
    if kind == _BINARY:
        return _lmlib64.get_binary(path)
    if kind == _STRING:
        return os.fsdecode(_lmlib64.get_string(path))
    if kind == _ARRAY:
        return [get(f"{path}/\\{index}") for index in range(_lmlib64.get_count(path))]
    value = json.loads(_lmlib64.get_json(path))
    if kind == _OBJECT:
        return {name: get(f"{path}/{name}") for name in value}
    return value


def set(path: str, value: typing.Any) -> None:
    """Sets the node at ``path`` to ``value``, which may be an os.PathLike or anything that JSON can hold. A string or
    an os.PathLike is written in the encoding of file names. Texts in a list or a dictionary are written in UTF-8."""
    if isinstance(value, (str, os.PathLike)):
        _lmlib64.set_string(path, os.fsencode(value))
    else:
        _lmlib64.set_json(path, json.dumps(value))


def erase(path: str) -> None:
    """Removes the node and everything below it."""
    _lmlib64.erase(path)


def run(command: str, **parameters: typing.Any) -> typing.Dict[str, typing.Any]:
    """Runs a command of the library and returns its result. docs/commands.md lists the commands.

    Raises CommandFailed with the library's text if the command fails. If the library refuses a parameter, the exception
    is a ParameterRefused, which is also a ValueError."""
    slot = _lmlib64.make_slot()
    try:
        for name, value in parameters.items():
            set(f"{slot}/Parameters/{name}", value)
        _lmlib64.set_string(f"{slot}/Command", command)
        _lmlib64.wait_for_command(slot)
        result: typing.Dict[str, typing.Any] = get(f"{slot}/Result")
    finally:
        _lmlib64.erase(slot)
    symbol = result.get("ErrorSymbol")
    if symbol is not None:
        kind = ParameterRefused if symbol in ("InvalidParameter", "PatternHasNoExtent") else CommandFailed
        raise kind(symbol, result["ErrorText"])
    return result


def version() -> str:
    """Returns the library's version, such as "0.2.0"."""
    return str(get("/Path/Version"))


def plates() -> typing.List[typing.Dict[str, typing.Any]]:
    """Returns the official plates as dictionaries with "Name", "Type", "GridSpacing" and "Thickness"."""
    return list(run("GetModelInfo", ListCalTabs=True)["CalTabs"])


def draw(kind: str, *, file: typing.Optional[_File] = None, image_size: typing.Optional[int] = None,
         plate: typing.Optional[str] = None, size: typing.Optional[typing.Tuple[int, int]] = None,
         grid_spacing: typing.Optional[float] = None, thickness: typing.Optional[float] = None,
         offset: typing.Optional[typing.Tuple[float, float]] = None, patterns: typing.Optional[int] = None,
         inverted: bool = False, plain: bool = False,
         **more: typing.Any) -> typing.Union[None, _File, _Array, typing.List[_Array]]:
    """Draws a pattern of the kind "official", "custom", "flexible", "assembly" or "halcon".

    file           the file to write; its ending selects the format
    image_size     length in pixels of the longer side of the picture that is returned
    plate          the "Type" of an official plate, see plates()
    size           columns and rows of inner corners of a flexible pattern
    grid_spacing   length of two squares, or distance between the centres of neighbouring round marks
    thickness      thickness of the plate
    offset         position (x, y) of a flexible pattern, or of a plate with round marks, in a coordinate system that
                   several patterns share
    patterns       number of patterns of an assembly
    inverted       exchanges dark and light
    plain          draws the pattern without its code
    more           further parameters of the command "GenerateCalibrationPattern", which docs/commands.md lists

    If image_size is given, returns the picture as an array (height, width) of uint8; for an assembly, returns a list of
    such arrays. Otherwise returns ``file``."""
    if kind not in _TYPES and kind != "official":
        raise ValueError(f"The kind {kind!r} is not one of official, custom, flexible, assembly and halcon.")
    values = {"Type": plate if kind == "official" else _TYPES[kind], "GridSize": size, "GridSpacing": grid_spacing,
              "Thickness": thickness, "Offset": offset}
    pattern: typing.Dict[str, typing.Any] = {name: list(value) if isinstance(value, tuple) else value
                                             for name, value in values.items() if value is not None}
    pattern["Polarity"] = not inverted
    count = 1 if patterns is None else patterns
    all_patterns = [dict(pattern, AssemblyPattern=index) if kind == "assembly" else pattern for index in range(count)]
    parameters = dict(more, Encoding=not plain, Patterns=all_patterns)
    if file is not None:
        parameters["Filename"] = file
    if image_size is not None:
        parameters["ImageSize"] = image_size
    result = run("GenerateCalibrationPattern", **parameters)
    if image_size is None:
        return file
    pictures: typing.List[_Array] = result["Patterns"]
    return pictures if kind == "assembly" else pictures[0]


@dataclasses.dataclass(frozen=True)
class Reading:
    """A pattern that was found in a picture. The arrays have a row for each corner or mark that was seen."""
    kind: str  # "plane" (flexible), "tile" (official, custom, assembly), "plate" (round marks) or "board" (plain)
    tile: typing.Optional[int]  # 0: official or custom; n + 1: pattern n of an assembly; None if the kind is not "tile"
    image_points: _Array  # (N, 2), pixels
    object_points: typing.Optional[_Array]  # (N, 3), mm; None if the grid spacing is not known
    lattice: _Array  # (N, 2), half grid spacings in the pattern's own coordinate system
    sigmas: _Array  # (N,), standard deviation of the image points, pixels
    disturbed: _Array  # (N,), True if the picture around the point does not look like a corner or mark
    angle: float  # from the picture's x axis to the pattern's x axis, in degrees clockwise
    orientations: int  # number of possible orientations; more than 1 only for plain boards
    # What the pattern encodes: grid_spacing, thickness, offset, assembly_pattern. None if that could not be read.
    values: typing.Optional[typing.Dict[str, typing.Any]]
    # 1 minus the probability that the reading is due to chance; for "board", the share of its corners that were seen.
    confidence: float


def read_patterns(image: _Array, *, patterns: typing.Union[_File, typing.Sequence[_File]] = (),
                  grid_spacing: typing.Optional[float] = None, board: typing.Optional[typing.Tuple[int, int]] = None,
                  square: typing.Optional[float] = None) -> typing.List[Reading]:
    """Finds the patterns in a picture and returns them. The pattern with the most corners comes first.

    image          array of uint8 or uint16 with the shape (height, width) or (height, width, channels). The number of
                   channels is 1 (grey), 3 (BGR) or 4 (BGRA). The array is not copied if the values of each row are
                   contiguous and every row lies behind the previous one in memory
    patterns       JSON or PDF files of the printed patterns, written by the library. If a reading fits one of these
                   patterns, its object points come from the pattern's file
    grid_spacing   grid spacing for the object points of patterns that do not encode a grid spacing
    board          also reads plain checkerboards with these columns and rows of inner corners
    square         side of a square of these checkerboards, to compute their object points

    Raises TypeError or ValueError if the array is of another type or shape or is too large, ValueError if the board has
    fewer than 3 x 3 inner corners, and RuntimeError if a file cannot be used."""
    files = [patterns] if isinstance(patterns, (str, os.PathLike)) else patterns
    return [Reading(**reading) for reading in
            _lmlib64.read_patterns(image, [os.fsencode(file) for file in files], grid_spacing, board, square)]


@dataclasses.dataclass(frozen=True)
class Calibration:
    """The lens of a camera, and a verdict on how far it can be trusted."""
    camera_matrix: _Array  # (3, 3), pixels
    distortion: _Array  # in OpenCV's order
    lens: str  # the lens model that was used, such as "pinhole5"
    intrinsics_sigmas: _Array  # standard deviations of fx, fy, cx, cy and the distortion
    rms: float  # root mean square distance between the used points and their projections, pixels
    # Pose of the print in each photograph: rotation vector and translation in mm. None if the pose is not known.
    poses: typing.List[typing.Optional[typing.Tuple[_Array, _Array]]]
    grade: str  # "good", "usable" or "poor"
    verdict: str  # the reason for the grade, in words
    advice: typing.List[str]  # what would improve the calibration; empty if nothing needs to be done
    notices: typing.List[str]  # further information, for example about what defines the scale
    left_out: typing.List[typing.Tuple[int, str]]  # index of each photograph that was not used, and the reason


def calibrate(object_points: typing.Sequence[_Array], image_points: typing.Sequence[_Array],
              image_size: typing.Tuple[int, int], *, lens: str = "auto",
              sigmas: typing.Optional[typing.Sequence[_Array]] = None) -> Calibration:
    """Calibrates a camera from photographs of one flat print.

    object_points  for each photograph, an array (N, 3) in mm, with z = 0
    image_points   for each photograph, an array (N, 2) in pixels
    image_size     (width, height) in pixels
    lens           "pinhole4", "pinhole5", "pinhole8", "pinhole12" or "fisheye"; "auto" chooses one of them
    sigmas         for each photograph, an array (N,) with the standard deviations of the image points in pixels; if
                   absent, all points get the same standard deviation

    Raises CalibrationImpossible with the reason if the photographs do not determine a calibration."""
    return Calibration(**_lmlib64.calibrate(object_points, image_points, image_size, lens, sigmas))
