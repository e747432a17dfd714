"""Holds drawings in DXF, as the command reads them, against ezdxf.

usage: dxf_judge_test.py RASTREL_CUTTING

ezdxf makes a drawing and says where its objects lie. Each is on a layer of its own, and lies within 0.02 of the
drawing's unit in both.
Exit status 77 without ezdxf.
"""

import math
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "drawing"))
from judged_paths import distance, lines_of  # noqa: E402

try:
    import ezdxf
    from ezdxf import path as dxf_path
except ImportError:
    sys.exit(77)

LIMIT = 0.02


def add_objects(space, doc, version):
    def on(name):
        return {"layer": name}

    space.add_line((0, 0), (30, 10), on("LINE"))
    space.add_circle((50, 20), 12.5, on("CIRCLE"))
    space.add_arc((90, 20), 15, 200, 40, dxfattribs=on("ARC"))
    space.add_arc((120, 20), 15, -30, 30, dxfattribs=on("SMALL_ARC"))
    space.add_polyline2d([(0, 40), (20, 40), (20, 60), (0, 60)], dxfattribs=on("POLYLINE")).close()
    bulged = space.add_polyline2d([(30, 40, 0.5), (50, 40, -1), (50, 60, 0.2), (30, 60, 2)], format="xyb",
                                  dxfattribs=on("BULGES"))
    bulged.close()
    block = doc.blocks.new("badge", base_point=(1, 2))
    block.add_circle((5, 5), 4, dxfattribs=on("0"))
    block.add_line((0, 0), (10, 3), dxfattribs=on("0"))
    outer = doc.blocks.new("outer")
    outer.add_blockref("badge", (3, 4), dxfattribs={"layer": "0", "rotation": 45})
    space.add_blockref("badge", (100, 50), dxfattribs={"layer": "INSERT", "xscale": 2, "yscale": -.5, "rotation": 30})
    space.add_blockref("outer", (140, 50), dxfattribs={"layer": "NESTED", "xscale": 1.5, "yscale": 1.5})
    space.add_blockref("badge", (0, 120), dxfattribs={"layer": "GRID", "column_count": 3, "row_count": 2,
                                                     "column_spacing": 15, "row_spacing": 12, "rotation": 20})
    space.add_arc((-90, 90), 15, 20, 100, dxfattribs={"layer": "MIRRORED", "extrusion": (0, 0, -1)})
    if version == "R12":
        return
    space.add_lwpolyline([(0, 80, 0.3), (20, 80, 0), (20, 100, -0.7)], format="xyb", dxfattribs=on("LWPOLYLINE"))
    space.add_lwpolyline([(-30, 80, 0.3), (-50, 80, 0), (-50, 100, -0.7)], format="xyb",
                         dxfattribs={"layer": "LWMIRRORED", "extrusion": (0, 0, -1)}).close(True)
    space.add_ellipse((60, 90), (20, 5), 0.4, 0.3, 4, dxfattribs=on("ELLIPSE"))
    space.add_ellipse((60, 130), (20, 5), 0.4, dxfattribs=on("WHOLE_ELLIPSE"))
    points = [(100, 80), (110, 100), (130, 70), (140, 100), (160, 90), (170, 110)]
    space.add_open_spline(points, degree=3, dxfattribs=on("SPLINE"))
    space.add_open_spline(points, degree=2, dxfattribs=on("PARABOLAS"))
    space.add_open_spline(points, degree=5, dxfattribs=on("DEGREE_5"))
    space.add_rational_spline(points, [1, 2, 5, .3, 1, 1], degree=3, dxfattribs=on("RATIONAL"))


def judged(entity):
    if entity.dxftype() == "INSERT":
        inserts = entity.multi_insert() if entity.mcount > 1 else [entity]
        for insert in inserts:
            for part in insert.virtual_entities():
                yield from judged(part)
        return
    # Paths of splines are approximations.
    curve = entity if entity.dxftype() == "SPLINE" else dxf_path.make_path(entity)
    yield [(p.x, p.y) for p in curve.flattening(0.002, segments=4)]


def moved(lines, x, y):
    return [[(px - x, py - y) for px, py in line] for line in lines]


def main():
    program = sys.argv[1]
    worst = 0
    with tempfile.TemporaryDirectory() as folder:
        for version, unit, factor in (("R12", 0, 1), ("R2010", 5, 10)):
            doc = ezdxf.new(version)
            if unit:
                doc.header["$INSUNITS"] = unit
            add_objects(doc.modelspace(), doc, version)
            file = pathlib.Path(folder, f"{version}.dxf")
            doc.saveas(file)
            theirs = {}
            for entity in ezdxf.readfile(file).modelspace():
                scaled = [[(x * factor, y * factor) for x, y in line] for line in judged(entity)]
                theirs.setdefault(entity.dxf.layer, []).extend(scaled)
            ours, _ = lines_of(program, file, lambda path: path["paint"]["layer"])
            if ours.keys() != theirs.keys():
                sys.exit(f"{version}: the layers {sorted(ours)} are not {sorted(theirs)}")
            left = min(x for lines in theirs.values() for line in lines for x, _ in line)
            bottom = min(y for lines in theirs.values() for line in lines for _, y in line)
            for layer, lines in ours.items():
                away = distance(lines, moved(theirs[layer], left, bottom))
                worst = max(worst, away / factor)
                # Its circles are four cubics, which are 0.004 of a unit beside the largest of these.
                if math.isnan(away) or away > LIMIT * factor:
                    sys.exit(f"{version}: {layer} lies {away:.4f} mm beside ezdxf's")
    print(f"at most {worst:.4f} of a unit")


main()
