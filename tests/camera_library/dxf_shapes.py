# Reads a DXF file with ezdxf and prints one line for each entity: its kind, its layer, how many numbers follow, and
# these numbers. Lengths are in mm and angles in degrees. Fails if ezdxf finds an error in the file, if the file is not
# of version AC1009 (R12), if it does not define the layer of an entity, or if it has an entity that the library does
# not write.
import sys

import ezdxf

drawing = ezdxf.readfile(sys.argv[1])
errors = drawing.audit().errors
if errors or drawing.dxfversion != "AC1009":
    sys.exit(f"{drawing.dxfversion} {errors}")
for entity in drawing.modelspace():
    if entity.dxf.layer not in drawing.layers:
        sys.exit(f"no layer {entity.dxf.layer}")
    kind, layer = entity.dxftype(), entity.dxf.layer
    if kind == "POLYLINE" and entity.is_closed:
        numbers = [number for point in entity.points() for number in (point.x, point.y)]
    elif kind == "CIRCLE":
        numbers = [entity.dxf.center.x, entity.dxf.center.y, entity.dxf.radius]
    elif kind == "TEXT":
        numbers = [entity.dxf.insert.x, entity.dxf.insert.y, entity.dxf.rotation]
    else:
        sys.exit(f"unexpected {kind}")
    print(kind, layer, len(numbers), *numbers)
