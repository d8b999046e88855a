"""Values of Kalvio Math in gdb: points, vectors, angles, boxes, and chains and areas of points.

    (gdb) source tools/gdb/kalvio.py         once, or a line of ~/.gdbinit
    (gdb) print corner
    $1 = Point2D(385000, 6672000.25)

Needs debug information (-g) with whole classes in it: where the library has none, build the program with
-femit-class-debug-always (g++) or -fstandalone-debug (clang++).
"""

import gdb
import gdb.printing


def digits(number):
    """The fewest that read back to the same double."""
    text = repr(float(number))
    return text[:-2] if text.endswith(".0") else text


def row(numbers):
    return "(" + ", ".join(digits(number) for number in numbers) + ")"


def coordinates(value):
    return [value[axis] for axis in "xyzm" if any(field.name == axis for field in value.type.fields())]


def numbers_of(vector):
    start, finish = vector["_M_impl"]["_M_start"], vector["_M_impl"]["_M_finish"]
    return [start[i] for i in range(int(finish - start))]


class Printer:
    """The class name, then what `text` makes of the value."""

    def __init__(self, value):
        is_reference = value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF)
        self.value = value.referenced_value() if is_reference else value

    def to_string(self):
        return self.value.type.strip_typedefs().unqualified().name.split("::")[-1] + self.text()


class Coordinates(Printer):
    def text(self):
        return row(coordinates(self.value))


class Angle(Printer):
    def text(self):
        radians = float(self.value["radians"])
        return "(%s rad, %.6f deg)" % (digits(radians), radians * 57.29577951308232)


class Box(Printer):
    def text(self):
        center, size = coordinates(self.value["center"]), coordinates(self.value["size"])
        low = [float(c) - 0.5 * float(s) for c, s in zip(center, size)]
        high = [float(c) + 0.5 * float(s) for c, s in zip(center, size)]
        return "(%s, %s)" % (row(low), row(high))


class CoordinatesND(Printer):
    def text(self):
        return row(numbers_of(self.value["coordinates"]))


class BoxND(Printer):
    def text(self):
        corners = [numbers_of(self.value[corner]["coordinates"]) for corner in ("minPoint", "maxPoint")]
        return "(%s, %s)" % (row(corners[0]), row(corners[1]))


class Line(Printer):
    def text(self):
        return "(%s, %s)" % (row(coordinates(self.value["start"])), row(coordinates(self.value["end"])))


class Chain(Printer):
    """As many points as `set print elements` allows, one a line with `set print pretty`."""

    def text(self):
        holes = [field for field in self.value.type.fields() if field.name == "holes"]
        count = len(numbers_of(self.value["points"]))
        return " of %d points" % count + (", holes: %d" % len(numbers_of(self.value["holes"])) if holes else "")

    def children(self):
        for i, point in enumerate(numbers_of(self.value["points"])):
            yield "[%d]" % i, point
        if any(field.name == "holes" for field in self.value.type.fields()):
            for i, hole in enumerate(numbers_of(self.value["holes"])):
                yield "hole %d" % i, hole


def register(objfile=None):
    printers = gdb.printing.RegexpCollectionPrettyPrinter("kalvio")
    for names, printer in (
        ("Point2D|Point2DM|Point3D|Vec2D|Vec3D", Coordinates),
        ("PointND|VecND", CoordinatesND),
        ("Angle", Angle),
        ("BoundingBox2D|BoundingBox3D", Box),
        ("BoundingBoxND", BoxND),
        ("Line2D|Line3D", Line),
        ("LineString2D|LineString3D|Polygon2D|Polygon3D", Chain),
    ):
        printers.add_printer(printer.__name__, "^Kalvio::Math::(%s)$" % names, printer)
    gdb.printing.register_pretty_printer(objfile, printers, replace=True)


register()
