#!/usr/bin/python3
"""Writes the DXF drawings the import_dxf test reads, with ezdxf (Debian's
python3-ezdxf) as the third-party writer: every entity the reader knows,
layers with index and true colours, blocks inserted with rotation and
scale, nested inserts, a self-inserting block and entities it skips.
With a second directory, each drawing is also written there as binary
DXF under the same name (ezdxf writes one-byte group codes for R12,
two-byte ones for later versions).
Usage: dxf_samples.py <output directory> [<binary output directory>]"""
import os
import sys

import ezdxf


def layers(doc):
    for name, colour in (("FACES", 1), ("LINES", 3), ("MESH", 4), ("CURVES", 5), ("INS", 6), ("TRUE", 7)):
        doc.layers.new(name, dxfattribs={"color": colour})


def faces(msp):
    msp.add_3dface([(0, 0, 0), (1, 0, 0), (0, 1, 0)], dxfattribs={"layer": "FACES"})
    msp.add_3dface([(0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)], dxfattribs={"layer": "FACES"})
    # DXF order: the third corner is the one across from the first.
    solid = msp.add_solid([(0, 0), (1, 0), (0, 1), (1, 1)], dxfattribs={"layer": "FACES", "color": 2})
    trace = msp.add_trace([(5, 0), (6, 0), (5, 1), (6, 1)], dxfattribs={"layer": "FACES"})
    for e in (solid, trace):
        e.dxf.vtx0, e.dxf.vtx1, e.dxf.vtx2, e.dxf.vtx3 = (e.dxf.vtx0[0], e.dxf.vtx0[1], 0), (e.dxf.vtx1[0], e.dxf.vtx1[1], 0), \
            (e.dxf.vtx2[0], e.dxf.vtx2[1], 0), (e.dxf.vtx3[0], e.dxf.vtx3[1], 0)


def meshes(msp):
    cube = msp.add_polyface(dxfattribs={"layer": "MESH"})
    c = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)]
    for f in ((0, 3, 2, 1), (4, 5, 6, 7), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7)):
        cube.append_face([c[i] for i in f])
    mesh = msp.add_polymesh(size=(3, 4), dxfattribs={"layer": "MESH"})
    for m in range(3):
        for n in range(4):
            mesh.set_mesh_vertex((m, n), (20 + n, m, 0.5 * m * n))


def lines(msp, modern):
    msp.add_line((0, 0, 0), (5, 5, 5), dxfattribs={"layer": "LINES"})
    msp.add_polyline3d([(0, 0, 0), (1, 2, 3), (4, 5, 6)], dxfattribs={"layer": "LINES"})
    msp.add_polyline2d([(30, 0), (32, 0), (32, 2), (30, 2)], close=True, dxfattribs={"layer": "LINES"})
    if modern:
        line = msp.add_line((0, 0, 0), (0, 0, 9), dxfattribs={"layer": "TRUE"})
        line.dxf.true_color = 0x123456


def curves(msp, modern):
    msp.add_circle((40, 0, 0), 2, dxfattribs={"layer": "CURVES"})
    msp.add_arc((50, 0, 0), 1, 0, 90, dxfattribs={"layer": "CURVES"})
    # A closed outline whose second side is a half circle bulging outwards.
    points = [(60, 0, 0), (62, 0, 1), (62, 2, 0), (60, 2, 0)]
    if modern:
        msp.add_lwpolyline(points, format="xyb", close=True, dxfattribs={"layer": "CURVES"})
        msp.add_ellipse((70, 0, 0), major_axis=(3, 0, 0), ratio=0.5, dxfattribs={"layer": "CURVES"})
    else:
        msp.add_polyline2d(points, format="xyb", close=True, dxfattribs={"layer": "CURVES"})


def blocks(doc, msp):
    b = doc.blocks.new("B")
    b.add_3dface([(0, 0, 0), (1, 0, 0), (0, 1, 0)], dxfattribs={"layer": "0", "color": 0})
    b.add_line((0, 0, 0), (1, 0, 0), dxfattribs={"layer": "LINES"})
    c = doc.blocks.new("C", base_point=(1, 1, 0))
    # By block: the face inside takes the colour of the insert of C.
    c.add_blockref("B", (1, 1, 0), dxfattribs={"color": 0})
    msp.add_blockref("B", (10, 0, 0), dxfattribs={"layer": "INS", "rotation": 90, "xscale": 2, "yscale": 2})
    msp.add_blockref("C", (0, 20, 0), dxfattribs={"layer": "INS", "color": 1})


def skipped(msp, modern):
    msp.add_text("skipped", dxfattribs={"layer": "LINES"})
    msp.add_point((1, 1, 1), dxfattribs={"layer": "LINES"})
    if modern:
        msp.add_mtext("skipped too", dxfattribs={"layer": "LINES"})


def drawing(version):
    modern = version != "R12"
    doc = ezdxf.new(version)
    layers(doc)
    msp = doc.modelspace()
    faces(msp)
    meshes(msp)
    lines(msp, modern)
    curves(msp, modern)
    blocks(doc, msp)
    skipped(msp, modern)
    return doc


def self_inserting():
    doc = ezdxf.new("R2018")
    s = doc.blocks.new("SELF")
    s.add_line((0, 0, 0), (1, 0, 0))
    s.add_blockref("SELF", (1, 0, 0))
    doc.modelspace().add_blockref("SELF", (0, 0, 0))
    return doc


def main():
    out = sys.argv[1]
    binary = sys.argv[2] if len(sys.argv) > 2 else None
    for name, doc in (("all_r12.dxf", drawing("R12")), ("all_r2018.dxf", drawing("R2018")),
                      ("self_insert.dxf", self_inserting())):
        doc.saveas(os.path.join(out, name))
        if binary:
            doc.saveas(os.path.join(binary, name), fmt="bin")


main()
