"""photograph_board.py PAGE.png DPI: writes eight views of the page, view-0.png to view-7.png. The simulated camera
has no distortion, a focal length of 1200 pixels and its principal point at (639.5, 479.5)."""
import math
import sys

import cv2
import numpy

page, scale = cv2.imread(sys.argv[1], cv2.IMREAD_GRAYSCALE), 25.4 / float(sys.argv[2])
camera = numpy.array([[1200, 0, 639.5], [0, 1200, 479.5], [0, 0, 1]])
millimetres = numpy.array([[scale, 0, -scale * page.shape[1] / 2], [0, scale, -scale * page.shape[0] / 2], [0, 0, 1]])
for view in range(8):
    turn = cv2.Rodrigues(0.55 * numpy.array([math.cos(view * 0.8), math.sin(view * 0.8), 0.3 * math.sin(view)]))[0]
    turn[:, 2] = [5 * view - 15, 12 - 4 * view, 330 + 10 * view]
    cv2.imwrite(f"view-{view}.png", cv2.warpPerspective(page, camera @ turn @ millimetres, (1280, 960),
                                                        borderValue=255))
