#!/usr/bin/env python3
"""lightwave_samples.py - writes the LightWave objects and scenes that
test_lightwave.tcl reads, built from the public LWOB, LWO2 and LWSC
layouts: big-endian IFF chunks (id, 32-bit size, even padding), surface
subchunks with 16-bit sizes, variable-length indices, and text scenes.

    usage: lightwave_samples.py <directory>

Objects go to <directory>/Objects, scenes to <directory>/Scenes (the
layout of a LightWave content directory), damaged files to
<directory>/bad.  With --seeds <directory> only the small samples are
written, flat, for the fuzz target's corpus.
"""
import math
import os
import struct
import sys


def chunk(ident, data, size_format=">I"):
    out = ident.encode() + struct.pack(size_format, len(data)) + data
    return out + (b"\0" if len(data) & 1 else b"")


def sub(ident, data):
    return chunk(ident, data, ">H")


def s0(text):
    b = text.encode() + b"\0"
    return b + (b"\0" if len(b) & 1 else b"")


def form(kind, chunks):
    body = kind.encode() + b"".join(chunks)
    return b"FORM" + struct.pack(">I", len(body)) + body


def vx(i, long_form=False):
    if long_form or i >= 0xFF00:
        return struct.pack(">I", 0xFF000000 | i)
    return struct.pack(">H", i)


def points(pts):
    return chunk("PNTS", b"".join(struct.pack(">3f", *p) for p in pts))


# The unit cube of LightWave's own documentation: its points, and its
# faces as LightWave writes them (clockwise seen from outside).  Face 1,
# (0 4 5 1), is the face at z = -0.5, the one facing the viewer of the
# front view; face 0 is the bottom.
CUBE = [(-.5, -.5, -.5), (.5, -.5, -.5), (.5, -.5, .5), (-.5, -.5, .5),
        (-.5, .5, -.5), (.5, .5, -.5), (.5, .5, .5), (-.5, .5, .5)]
CUBE_FACES = [(0, 1, 2, 3), (0, 4, 5, 1), (1, 5, 6, 2), (3, 2, 6, 7), (0, 3, 7, 4), (4, 7, 6, 5)]


def lwob_box():
    """An LWOB box: the front face red, the others blue, the top face
    carrying one red detail triangle; a CRVS chunk and an unknown chunk of
    odd size that the reader skips."""
    pols = b""
    for n, face in enumerate(CUBE_FACES):
        pols += struct.pack(">H", 4) + b"".join(struct.pack(">H", i) for i in face)
        if n == 5:
            pols += struct.pack(">h", -2) + struct.pack(">H", 1)
            pols += struct.pack(">H", 3) + struct.pack(">3H", 4, 7, 6) + struct.pack(">h", 1)
        else:
            pols += struct.pack(">h", 1 if n == 1 else 2)
    surf_red = s0("Red") + sub("COLR", bytes([255, 0, 0, 0])) + sub("FLAG", struct.pack(">H", 0))
    surf_blue = s0("Blue") + sub("DIFF", struct.pack(">H", 256)) + sub("COLR", bytes([0, 0, 255, 0]))
    return form("LWOB", [
        points(CUBE),
        chunk("SRFS", s0("Red") + s0("Blue")),
        chunk("POLS", pols),
        chunk("CRVS", struct.pack(">H", 2) + struct.pack(">2H", 0, 1) + struct.pack(">h", 1)),
        chunk("ZZZZ", b"odd"),
        chunk("SURF", surf_red),
        chunk("SURF", surf_blue),
    ])


def pols(kind, polygons, long_form=False):
    data = kind.encode()
    for p in polygons:
        data += struct.pack(">H", len(p)) + b"".join(vx(i, long_form) for i in p)
    return chunk("POLS", data)


def ptag(tags, long_form=False):
    return chunk("PTAG", b"SURF" + b"".join(vx(p, long_form) + struct.pack(">H", t) for p, t in tags))


def surf2(name, rgb):
    return chunk("SURF", s0(name) + s0("") + sub("COLR", struct.pack(">3f", *rgb) + vx(0)) +
                 sub("DIFF", struct.pack(">f", 1.0) + vx(0)))


def layr(number, name, pivot=(0, 0, 0), parent=None):
    data = struct.pack(">HH3f", number, 0, *pivot) + s0(name)
    if parent is not None:
        data += struct.pack(">H", parent)
    return chunk("LAYR", data)


def lwo2_layers(big=True):
    """An LWO2 object of two layers (three with big): the base cube with
    tagged red and green faces and texture coordinates (a VMAP for all
    points, a VMAD for one corner of the front face); a child layer with a
    pivot whose polygons use 4-byte indices: a triangle, a line and a
    one-point polygon, a patch, and a curve that is skipped; with big, a
    third layer whose triangle names points past 0xFF00."""
    vmap = b"TXUV" + struct.pack(">H", 2) + s0("uv")
    for i, p in enumerate(CUBE):
        vmap += vx(i) + struct.pack(">2f", p[0] + .5, p[1] + .5)
    vmad = b"TXUV" + struct.pack(">H", 2) + s0("uv") + vx(0) + vx(1) + struct.pack(">2f", .25, .75)
    chunks = [
        chunk("TAGS", s0("Red") + s0("Green") + s0("Grey")),
        layr(0, "base"),
        points(CUBE),
        chunk("BBOX", struct.pack(">6f", -.5, -.5, -.5, .5, .5, .5)),
        chunk("VMAP", vmap),
        pols("FACE", CUBE_FACES),
        ptag([(0, 1), (1, 0), (2, 1), (3, 1), (4, 1), (5, 1)]),
        chunk("VMAD", vmad),
        layr(1, "top", (1, 2, 3), 0),
        points([(0, 2, 0), (1, 2, 0), (1, 3, 0), (0, 3, 0)]),
        pols("FACE", [(0, 1, 2), (0, 1), (3,)], long_form=True),
        ptag([(0, 2), (1, 2), (2, 2)], long_form=True),
        pols("PTCH", [(0, 1, 2, 3)]),
        pols("CURV", [(0, 1, 2, 3)]),
        ptag([(0, 2)]),
    ]
    if big:
        n = 0xFF00 + 3
        pts = [(0.0, 0.0, 0.0)] * (n - 3) + [(5, 0, 0), (6, 0, 0), (5, 1, 0)]
        chunks += [layr(2, "big"), points(pts), pols("FACE", [(n - 3, n - 2, n - 1)]), ptag([(0, 0)])]
    chunks += [
        chunk("CLIP", struct.pack(">I", 1) + sub("STIL", s0("images/none.png"))),
        surf2("Red", (1, 0, 0)),
        surf2("Green", (0, 1, 0)),
        surf2("Grey", (.5, .5, .5)),
    ]
    return form("LWO2", chunks)


def lwo2_cube():
    """The documentation's cube as LWO2, one red surface."""
    return form("LWO2", [
        chunk("TAGS", s0("Default")),
        layr(0, ""),
        points(CUBE),
        pols("FACE", CUBE_FACES),
        ptag([(i, 0) for i in range(6)]),
        surf2("Default", (1, 0, 0)),
    ])


def lwo2_triangle():
    """One triangle: points (0 0 0), (1 0 0), (0 1 0), yellow."""
    return form("LWO2", [
        chunk("TAGS", s0("Yellow")),
        layr(0, ""),
        points([(0, 0, 0), (1, 0, 0), (0, 1, 0)]),
        pols("FACE", [(0, 2, 1)]),
        ptag([(0, 0)]),
        surf2("Yellow", (1, 1, 0)),
    ])


NEW_SCENE = """LWSC
3

FirstFrame 1
LastFrame 60

LoadObjectLayer 1 Objects/box.lwo
ShowObject 7 3
ObjectMotion
NumChannels 9
{channels1}
PathAlignLookAhead 0.033

LoadObjectLayer 1 Objects/triangle.lwo
ObjectMotion
NumChannels 9
{channels2}
ParentItem 10000000

AddLight 20000000
LightName Light
LightMotion
NumChannels 9
Channel 0
{{ Envelope
  1
  Key 99 0 0 0 0 0 0 0 0
  Behaviors 1 1
}}
ParentItem 10000001

AddCamera 30000000
CameraName Camera
"""


def envelope_channels(values):
    """Nine channels, one envelope each; the angles (h, p, b) are given in
    degrees and written in radians, as envelopes keep them."""
    out = []
    for n, v in enumerate(values):
        if 3 <= n <= 5:
            v = math.radians(v)
        out.append("Channel %d\n{ Envelope\n  2\n  Key %.17g 0 0 0 0 0 0 0 0\n  Key 123 2 0 0 0 0 0 0 0\n"
                   "  Behaviors 1 1\n}" % (n, v))
    return "\n".join(out)


OLD_SCENE = """LWSC
1

FirstFrame 1
LastFrame 60

LoadObject Objects/box.lwo
ShowObject 8 3
ObjectMotion (unnamed)
  9
  2
  10 0 0 0 0 0 1 1 1
  0 0 0 0 0
  99 99 99 0 0 0 1 1 1
  30 0 0 0 0
EndBehavior 1

LoadObject Objects\\triangle.lwo
ShowObject 8 3
ObjectMotion (unnamed)
  9
  1
  0 0 5 90 0 0 1 1 1
  0 0 0 0 0
EndBehavior 1
ParentObject 1

LoadObject Objects/missing.lwo
ObjectMotion (unnamed)
  9
  1
  0 0 0 0 0 0 1 1 1
  0 0 0 0 0
EndBehavior 1

AddLight
LightName Light
ParentObject 1
"""


def nulls_scene():
    """A null, moved, parenting an object, and a layer picked by number;
    the lines carry the item numbers later versions write."""
    return """LWSC
3

AddNullObject 10000000 Pivot Null
ObjectMotion
NumChannels 9
{chan}

LoadObjectLayer 2 10000001 layers.lwo
ParentItem 10000000
""".format(chan=envelope_channels([0, 100, 0, 0, 0, 0, 1, 1, 1]))


PAIR_SCENE = """LWSC
3

LoadObjectLayer 1 Objects/cube.lwo
ObjectMotion
NumChannels 9
{channels1}

LoadObjectLayer 1 Objects/triangle.lwo
ObjectMotion
NumChannels 9
{channels2}
ParentItem 10000000
"""


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data if isinstance(data, bytes) else data.encode())


def chunk_boundaries(data):
    """The offsets at which each chunk of an IFF file starts."""
    out = []
    at = 12
    while at + 8 <= len(data):
        out.append(at)
        size = struct.unpack(">I", data[at + 4:at + 8])[0]
        at += 8 + size + (size & 1)
    return out


def bad_files(directory, layers):
    bad = os.path.join(directory, "bad")
    for at in chunk_boundaries(layers)[1:]:
        write(os.path.join(bad, "cut_%05d.lwo" % at), layers[:at])
        write(os.path.join(bad, "cut_%05d.lwo" % (at + 5)), layers[:at + 5])
    big_form = bytearray(lwo2_triangle())
    struct.pack_into(">I", big_form, 4, 0x7FFFFFF0)
    write(os.path.join(bad, "form_size.lwo"), bytes(big_form))
    # A PNTS chunk claiming more bytes than follow (the FORM size adjusted
    # to the file so that only the chunk is wrong).
    body = b"LWO2" + b"PNTS" + struct.pack(">I", 0x10000000) + struct.pack(">3f", 0, 0, 0)
    write(os.path.join(bad, "chunk_size.lwo"), b"FORM" + struct.pack(">I", len(body)) + body)
    write(os.path.join(bad, "point_index.lwo"), form("LWO2", [
        points([(0, 0, 0), (1, 0, 0), (0, 1, 0)]), pols("FACE", [(0, 1, 7)])]))
    write(os.path.join(bad, "lwob_point_index.lwo"), form("LWOB", [
        points([(0, 0, 0), (1, 0, 0), (0, 1, 0)]),
        chunk("POLS", struct.pack(">4H", 3, 0, 1, 9) + struct.pack(">h", 1))]))
    # 1023 corners announced, three given.
    write(os.path.join(bad, "count_1023.lwo"), form("LWO2", [
        points([(0, 0, 0), (1, 0, 0), (0, 1, 0)]),
        chunk("POLS", b"FACE" + struct.pack(">H", 1023) + struct.pack(">3H", 0, 1, 2))]))
    write(os.path.join(bad, "lwob_count.lwo"), form("LWOB", [
        points([(0, 0, 0), (1, 0, 0), (0, 1, 0)]),
        chunk("POLS", struct.pack(">H", 0xFFFF) + struct.pack(">3H", 0, 1, 2))]))
    write(os.path.join(bad, "ptag_index.lwo"), form("LWO2", [
        points([(0, 0, 0), (1, 0, 0), (0, 1, 0)]), pols("FACE", [(0, 1, 2)]), ptag([(5, 0)])]))
    write(os.path.join(bad, "no_polygons.lwo"), form("LWO2", [points([(0, 0, 0)])]))
    write(os.path.join(bad, "not_lightwave.lwo"), b"hello, this is not a LightWave file\n")
    write(os.path.join(bad, "ilbm.lwo"), form("ILBM", [chunk("BMHD", b"\0" * 20)]))
    write(os.path.join(bad, "many.lws"), "LWSC\n3\n\n" + "LoadObject Objects/nonesuch.lwo\n" * 100000)
    write(os.path.join(bad, "only_missing.lws"), "LWSC\n3\n\nLoadObject nonesuch.lwo\nAddNullObject N\n")
    write(os.path.join(bad, "cycle.lws"), "LWSC\n1\n\nLoadObject ../Objects/box.lwo\nParentObject 2\n"
          "LoadObject ../Objects/triangle.lwo\nParentObject 1\n")


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "--seeds":
        d = sys.argv[2]
        write(os.path.join(d, "box.lwob"), lwob_box())
        write(os.path.join(d, "layers.lwo"), lwo2_layers(big=False))
        write(os.path.join(d, "triangle.lwo"), lwo2_triangle())
        write(os.path.join(d, "old.lws"), OLD_SCENE)
        write(os.path.join(d, "new.lws"), NEW_SCENE.format(
            channels1=envelope_channels([10, 0, 0, 0, 0, 0, 1, 1, 1]),
            channels2=envelope_channels([0, 0, 5, 90, 0, 0, 1, 1, 1])))
        return
    d = sys.argv[1]
    objects = os.path.join(d, "Objects")
    scenes = os.path.join(d, "Scenes")
    write(os.path.join(objects, "box.lwob"), lwob_box())
    write(os.path.join(objects, "box.lwo"), lwob_box())
    layers = lwo2_layers()
    write(os.path.join(objects, "layers.lwo"), layers)
    write(os.path.join(objects, "layers_small.lwo"), lwo2_layers(big=False))
    write(os.path.join(objects, "triangle.lwo"), lwo2_triangle())
    write(os.path.join(objects, "cube.lwo"), lwo2_cube())
    write(os.path.join(scenes, "turned.lws"), PAIR_SCENE.format(
        channels1=envelope_channels([1, 2, 3, 30, 45, 60, 1, 2, 1]),
        channels2=envelope_channels([0.5, 0, 0, -20, 10, 5, 1, 1, 1])))
    write(os.path.join(scenes, "pair.lws"), PAIR_SCENE.format(
        channels1=envelope_channels([0, 3, 0, 0, 0, 0, 2, 2, 2]),
        channels2=envelope_channels([1, 0, 0, 0, 0, 90, 1, 1, 1])))
    write(os.path.join(scenes, "new.lws"), NEW_SCENE.format(
        channels1=envelope_channels([10, 0, 0, 0, 0, 0, 1, 1, 1]),
        channels2=envelope_channels([0, 0, 5, 90, 0, 0, 1, 1, 1])))
    write(os.path.join(scenes, "old.lws"), OLD_SCENE)
    write(os.path.join(objects, "nulls.lws"), nulls_scene())
    bad_files(d, lwo2_layers(big=False))


if __name__ == "__main__":
    main()
