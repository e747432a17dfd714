"""Reads drawings by ezdxf, and prints its audit and all lines.

usage: dxf_judge.py FILE

A line a fault: "fault MESSAGE". A line an entity: its kind, layer, "closed" or "open", and the positions along it,
curves as lines within 0.001 mm. Exit status 77 without ezdxf.
"""

import sys

try:
    import ezdxf
except ImportError:
    sys.exit(77)


def points_of(entity):
    kind = entity.dxftype()
    if kind == "LINE":
        return [entity.dxf.start, entity.dxf.end]
    if kind == "POINT":
        return [entity.dxf.location]
    if kind == "LWPOLYLINE":
        return list(entity.vertices_in_wcs())
    if kind == "POLYLINE":
        return [vertex.dxf.location for vertex in entity.vertices]
    return list(entity.flattening(0.001))


def main():
    drawing = ezdxf.readfile(sys.argv[1])
    audit = drawing.audit()
    for fault in [*audit.errors, *audit.fixes]:
        print("fault", fault.message)
    print("version", drawing.dxfversion, "units", drawing.header.get("$INSUNITS"))
    for entity in drawing.modelspace():
        is_closed = entity.dxftype().endswith("POLYLINE") and entity.is_closed
        print(entity.dxftype(), entity.dxf.layer, "closed" if is_closed else "open",
              " ".join(f"{point[0]:.7f} {point[1]:.7f}" for point in points_of(entity)))


main()
