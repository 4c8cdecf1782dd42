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
    # The picture has 4 pixels per millimetre and 50 per square.
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

    def test_raises_the_librarys_texts(self):
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
        self.assertEqual(lmlib64.get("/Execute"), {}, "slots are left over")

    def test_gives_the_tree(self):
        lmlib64.set("/mine", {"a": [1, 2.5, None, True], "b": "\u00e4"})
        self.assertEqual(lmlib64.get("/mine"), {"a": [1, 2.5, None, True], "b": "\u00e4"})
        lmlib64.erase("/mine")
        self.assertEqual(lmlib64.version(), os.environ["LMCALTAB_VERSION"])
        self.assertEqual(lmlib64.plates()[2]["Type"], "Plate12")

    def test_lets_other_threads_run(self):
        drawing = threading.Thread(target=lambda: lmlib64.draw("flexible", size=(91, 91), grid_spacing=5,
                                                               image_size=8000))
        drawing.start()
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
    def test_gives_points_of_picture_and_object(self):
        [reading] = lmlib64.read_patterns(board_picture(), grid_spacing=25)
        self.assertEqual((reading.kind, reading.image_points.shape, reading.object_points.shape),
                         ("plane", (63, 2), (63, 3)))
        expected = (reading.object_points[:, :2] - reading.object_points[0, :2]) * 4 + reading.image_points[0]
        self.assertLess(abs(expected - reading.image_points).max(), 0.1)
        self.assertEqual(tuple(numpy.ptp(reading.object_points, axis=0)), (100, 75, 0))
        [tile] = lmlib64.read_patterns(lmlib64.draw("custom", grid_spacing=12, thickness=2, image_size=700))
        self.assertEqual(tile.values, {"grid_spacing": 12.0, "thickness": 2.0})
        self.assertEqual(tuple(numpy.ptp(tile.object_points, axis=0)), (84, 84, 0))

    def test_takes_every_layout_of_a_picture(self):
        picture = board_picture()
        expected = lmlib64.read_patterns(picture)[0].image_points
        large = numpy.full((picture.shape[0] + 40, 900), 77, numpy.uint8)
        large[20:-20, 100:700] = picture
        layouts = {
            "rows of a larger picture": (large[20:-20, 100:700], 0.01),
            "columns first": (numpy.asfortranarray(picture), 0.01),
            "reversed twice": (picture[::-1, ::-1].copy()[::-1, ::-1], 0.01),
            "colour": (numpy.dstack([picture] * 3), 0.01),
            "plane of a colour picture": (numpy.dstack([picture] * 3)[:, :, 1], 0.01),
            "16 bits": (picture.astype(numpy.uint16) * 257, 0.05),
        }
        for name, (layout, tolerance) in layouts.items():
            with self.subTest(name):
                self.assertLess(abs(lmlib64.read_patterns(layout)[0].image_points - expected).max(), tolerance)

    def test_refuses_other_pictures(self):
        for picture, error in ((numpy.zeros((9, 9)), TypeError), (numpy.zeros(9, numpy.uint8), ValueError),
                               (numpy.zeros((9, 9, 2), numpy.uint8), ValueError),
                               (numpy.zeros((0, 9), numpy.uint8), ValueError)):
            with self.assertRaises(error):
                lmlib64.read_patterns(picture)
        with self.assertRaisesRegex(RuntimeError, "absent.json"):
            lmlib64.read_patterns(board_picture(), patterns="absent.json")


class Calibrating(unittest.TestCase):
    def test_finds_the_camera_that_computed_the_points(self):
        target = numpy.array([[x * 20.0, y * 20.0, 0] for y in range(8) for x in range(11)])
        camera = numpy.array([[1500.0, 0, 640], [0, 1490, 470], [0, 0, 1]])
        random = numpy.random.default_rng(5)
        pictures = []
        for turn in range(12):
            seen = (target - [100, 70, 0]) @ rotation(0.6 * math.cos(turn), 0.6 * math.sin(1.7 * turn)).T
            seen = (seen + [30 * math.sin(turn), 20 * math.cos(turn), 500 + 20 * turn]) @ camera.T
            pictures.append(seen[:, :2] / seen[:, 2:] + random.normal(0, 0.05, (len(seen), 2)))
        result = lmlib64.calibrate([target] * 12, pictures, (1280, 960), lens="pinhole4",
                                   sigmas=[numpy.full(len(target), 0.05)] * 12)
        difference = abs(result.camera_matrix - camera)
        self.assertLess(difference.max(), 5 * result.intrinsics_sigmas[:4].max() + 0.01)
        self.assertLess(difference.max(), 3)
        self.assertAlmostEqual(result.rms, 0.05 * math.sqrt(2), delta=0.01)
        self.assertEqual(len(result.poses), 12)
        with self.assertRaises(lmlib64.CalibrationImpossible):
            lmlib64.calibrate([target], pictures[:1], (1280, 960))
        with self.assertRaisesRegex(ValueError, "as image points"):
            lmlib64.calibrate([target[:5]], pictures[:1], (1280, 960))
        with self.assertRaisesRegex(ValueError, 'lens "wide" is not known'):
            lmlib64.calibrate([target], pictures[:1], (1280, 960), lens="wide")


if __name__ == "__main__":
    unittest.main()
