"""Tests the Python package as its users use it."""
import math
import multiprocessing
import os
import pathlib
import pickle
import tempfile
import threading
import time
import unittest

import numpy

import lmlib64


def draw_in_child(folder):
    file = os.path.join(folder, f"{os.getpid()}.pdf")
    lmlib64.draw("halcon", grid_spacing=12, file=file)
    return pathlib.Path(file).read_bytes(), len(lmlib64.read_patterns(board_picture()))


def board_picture():
    # The picture has 4 pixels per millimetre. A square is half a grid spacing, so its side has 50 pixels.
    return lmlib64.draw("flexible", size=(9, 7), grid_spacing=25, image_size=600)


def rotation(x, y):
    return (numpy.array([[1, 0, 0], [0, math.cos(x), -math.sin(x)], [0, math.sin(x), math.cos(x)]]) @
            numpy.array([[math.cos(y), 0, math.sin(y)], [0, 1, 0], [-math.sin(y), 0, math.cos(y)]]))


class Drawing(unittest.TestCase):
    def test_returns_pictures_and_files(self):
        picture = board_picture()
        self.assertEqual((picture.shape, picture.dtype), ((500, 600), numpy.uint8))
        self.assertEqual(len(lmlib64.draw("assembly", patterns=3, grid_spacing=10, image_size=100)), 3)
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "gr\u00f6\u00dfe.png"
            self.assertEqual(lmlib64.draw("official", plate="Plate12", file=file, Resolution=100), file)
            self.assertEqual(file.read_bytes()[:4], b"\x89PNG")

    def test_draws_what_is_asked_for(self):
        def drawn(**options):
            return lmlib64.draw("flexible", size=(9, 7), grid_spacing=25, image_size=600, **options)

        usual = drawn()
        difference = abs(usual.astype(int) + drawn(inverted=True) - 255)[30:-30, 30:-30]
        self.assertLess(numpy.median(difference), 5, "inverted")
        self.assertEqual(lmlib64.read_patterns(drawn(plain=True)), [])
        moved = lmlib64.read_patterns(drawn(offset=(50, -25)))[0].lattice - lmlib64.read_patterns(usual)[0].lattice
        self.assertTrue((moved == [4, -2]).all(), moved)

    def test_raises_errors_with_the_librarys_texts(self):
        with self.assertRaisesRegex(ValueError, r'"GridSize" is \[5, 900\]; it must be') as caught:
            lmlib64.draw("flexible", size=(5, 900), grid_spacing=10, image_size=100)
        self.assertEqual(caught.exception.symbol, "InvalidParameter")
        self.assertEqual(str(pickle.loads(pickle.dumps(caught.exception))), str(caught.exception))
        with self.assertRaisesRegex(ValueError, "has no such parameter"):
            lmlib64.draw("halcon", grid_spacing=10, image_size=100, Bogus=1)
        with self.assertRaisesRegex(lmlib64.CommandFailed, "could not be written: No such file") as caught:
            lmlib64.draw("halcon", grid_spacing=10, file="/nowhere/at/all.pdf")
        self.assertNotIsInstance(caught.exception, ValueError)
        with self.assertRaisesRegex(KeyError, "ItemInexistent at \"/absent\""):
            lmlib64.get("/absent")
        self.assertEqual(lmlib64.get("/Execute"), {}, "command slots are left in the tree")

    def test_reads_and_writes_the_tree(self):
        lmlib64.set("/mine", {"a": [1, 2.5, None, True], "b": "\u00e4"})
        self.assertEqual(lmlib64.get("/mine"), {"a": [1, 2.5, None, True], "b": "\u00e4"})
        lmlib64.erase("/mine")
        self.assertEqual(lmlib64.version(), os.environ["LMCALTAB_VERSION"])
        self.assertEqual(lmlib64.plates()[2]["Type"], "Plate12")

    def test_lets_other_threads_run(self):
        drawing = threading.Thread(target=lambda: lmlib64.draw("flexible", size=(91, 91), grid_spacing=5,
                                                               image_size=8000))
        drawing.start()
        # If drawing held the interpreter's lock, this thread would get hardly any turns.
        turns = 0
        while drawing.is_alive():
            time.sleep(0.001)
            turns += 1
        self.assertGreater(turns, 3)

    def test_works_in_child_processes(self):
        board_picture()
        with tempfile.TemporaryDirectory() as folder:
            for method in ("fork", "spawn"):
                with multiprocessing.get_context(method).Pool(2) as pool:
                    results = pool.map(draw_in_child, [folder] * 3)
                self.assertEqual(len(set(results)), 1)
                self.assertEqual(results[0][1], 1)


class Reading(unittest.TestCase):
    def test_gives_image_points_and_object_points(self):
        [reading] = lmlib64.read_patterns(board_picture(), grid_spacing=25)
        self.assertEqual((reading.kind, reading.image_points.shape, reading.object_points.shape),
                         ("plane", (63, 2), (63, 3)))
        expected = (reading.object_points[:, :2] - reading.object_points[0, :2]) * 4 + reading.image_points[0]
        self.assertLess(abs(expected - reading.image_points).max(), 0.1)
        self.assertEqual(tuple(numpy.ptp(reading.object_points, axis=0)), (100, 75, 0))
        [tile] = lmlib64.read_patterns(lmlib64.draw("custom", grid_spacing=12, thickness=2, image_size=700))
        self.assertEqual((tile.tile, tile.values), (0, {"grid_spacing": 12.0, "thickness": 2.0}))
        self.assertEqual(tuple(numpy.ptp(tile.object_points, axis=0)), (84, 84, 0))

    def test_takes_lengths_from_the_board_or_a_pattern_file(self):
        plain = lmlib64.draw("flexible", size=(9, 7), grid_spacing=25, image_size=600, plain=True)
        with tempfile.TemporaryDirectory() as folder:
            file = lmlib64.draw("flexible", size=(9, 7), grid_spacing=40, file=pathlib.Path(folder) / "target.json")
            for name, picture, options, extent in (
                    ("board", plain, {"board": (9, 7), "square": 12.5}, (100, 75, 0)),
                    ("file", board_picture(), {"patterns": file}, (160, 120, 0)),
                    ("file's name", board_picture(), {"patterns": str(file)}, (160, 120, 0)),
                    ("files", board_picture(), {"patterns": [file]}, (160, 120, 0))):
                with self.subTest(name):
                    [reading] = lmlib64.read_patterns(picture, **options)
                    self.assertEqual(tuple(numpy.ptp(reading.object_points, axis=0)), extent)
                    self.assertEqual(tuple(numpy.ptp(reading.lattice, axis=0)), (8, 6))

    def test_reads_pictures_of_every_layout_and_type(self):
        picture = board_picture()
        expected = lmlib64.read_patterns(picture)[0].image_points
        large = numpy.full((picture.shape[0] + 40, 900), 77, numpy.uint8)
        large[20:-20, 100:700] = picture
        layouts = {
            "rows of a larger picture": (large[20:-20, 100:700], 0.01),
            "columns first": (numpy.asfortranarray(picture), 0.01),
            "rows upwards": (picture[::-1].copy()[::-1], 0.01),
            "reversed twice": (picture[::-1, ::-1].copy()[::-1, ::-1], 0.01),
            "colour": (numpy.dstack([picture] * 3), 0.01),
            "plane of a colour picture": (numpy.dstack([picture] * 3)[:, :, 1], 0.01),
            "16 bits": (picture.astype(numpy.uint16) * 257, 0.05),
        }
        for name, (layout, tolerance) in layouts.items():
            with self.subTest(name):
                self.assertLess(abs(lmlib64.read_patterns(layout)[0].image_points - expected).max(), tolerance)

    def test_refuses_other_arrays_and_absent_pattern_files(self):
        for picture, error in ((numpy.zeros((9, 9)), TypeError), (numpy.zeros(9, numpy.uint8), ValueError),
                               (numpy.zeros((9, 9, 2), numpy.uint8), ValueError),
                               (numpy.zeros((0, 9), numpy.uint8), ValueError)):
            with self.assertRaises(error):
                lmlib64.read_patterns(picture)
        with self.assertRaisesRegex(RuntimeError, "absent.json"):
            lmlib64.read_patterns(board_picture(), patterns="absent.json")


class Calibrating(unittest.TestCase):
    target = numpy.array([[x * 20.0, y * 20.0, 0] for y in range(8) for x in range(11)])
    camera = numpy.array([[1500.0, 0, 640], [0, 1490, 470], [0, 0, 1]])

    def photographs(self, noise):
        """The image points of twelve photographs, and the pose of the target in each."""
        random = numpy.random.default_rng(5)
        pictures, poses = [], []
        for turn in range(12):
            turned = rotation(0.6 * math.cos(turn), 0.6 * math.sin(1.7 * turn))
            place = numpy.array([30 * math.sin(turn), 20 * math.cos(turn), 500 + 20 * turn]) - turned @ [100, 70, 0]
            seen = (self.target @ turned.T + place) @ self.camera.T
            pictures.append(seen[:, :2] / seen[:, 2:] + random.normal(0, 1, (len(seen), 2)) * noise)
            poses.append((turned, place))
        return pictures, poses

    def calibrate(self, pictures, **options):
        return lmlib64.calibrate([self.target] * 12, pictures, (1280, 960), lens="pinhole4", **options)

    def test_finds_the_camera_that_the_points_were_computed_with(self):
        target = self.target
        pictures, poses = self.photographs(0.05)
        result = self.calibrate(pictures, sigmas=[numpy.full(len(target), 0.05)] * 12)
        difference = abs(result.camera_matrix - self.camera)
        self.assertLess(difference.max(), 5 * result.intrinsics_sigmas[:4].max() + 0.01)
        self.assertLess(difference.max(), 3)
        self.assertAlmostEqual(result.rms, 0.05 * math.sqrt(2), delta=0.01)
        self.assertEqual((len(result.poses), result.left_out), (12, []))
        for (vector, place), (turned, true_place) in zip(result.poses, poses):
            self.assertLess(abs(place - true_place).max(), 2)
            self.assertAlmostEqual(numpy.linalg.norm(vector), math.acos((numpy.trace(turned) - 1) / 2), delta=0.005)
        with self.assertRaises(lmlib64.CalibrationImpossible):
            lmlib64.calibrate([target], pictures[:1], (1280, 960))
        with self.assertRaisesRegex(ValueError, "for each image point"):
            lmlib64.calibrate([target[:5]], pictures[:1], (1280, 960))
        with self.assertRaisesRegex(ValueError, 'lens "wide" is not known'):
            lmlib64.calibrate([target], pictures[:1], (1280, 960), lens="wide")

    def test_trusts_points_by_their_sigmas(self):
        noise = numpy.where(numpy.arange(len(self.target)) % 2, 0.02, 1.0)
        pictures, _ = self.photographs(noise[:, None])
        weighted = self.calibrate(pictures, sigmas=[noise] * 12)
        self.assertLess(weighted.intrinsics_sigmas[0], 0.4 * self.calibrate(pictures).intrinsics_sigmas[0])

    def test_names_photographs_that_are_left_out(self):
        pictures, _ = self.photographs(0.05)
        pictures[7] = numpy.random.default_rng(1).permutation(pictures[7])
        [(photograph, reason)] = self.calibrate(pictures).left_out
        self.assertEqual(photograph, 7)
        self.assertIn(" ", reason)


if __name__ == "__main__":
    unittest.main()
