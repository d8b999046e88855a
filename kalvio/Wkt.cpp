#include "kalvio/Wkt.h"

#include "kalvio/core/Point2DM.h"
#include "kalvio/core/detail/Constants.h"
#include "kalvio/core/detail/Digits.h"
#include "kalvio/curves/Arc2D.h"
#include "kalvio/curves/Arc3D.h"
#include "kalvio/curves/Circle2D.h"
#include "kalvio/curves/Circle3D.h"
#include "kalvio/curves/Clothoid.h"
#include "kalvio/curves/Parabola.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Polyline3D.h"
#include "kalvio/curves/Spiral2D.h"
#include "kalvio/polygons/LineString2D.h"
#include "kalvio/polygons/LineString3D.h"
#include "kalvio/polygons/Polygon2D.h"
#include "kalvio/polygons/Polygon3D.h"
#include "kalvio/polygons/PolygonCurve2D.h"
#include "kalvio/polygons/PolygonCurve3D.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

namespace Kalvio::Math {

namespace {

enum class Kind {
    Point,
    LineString,
    CircularString,
    CompoundCurve,
    Polygon,
    CurvePolygon,
    MultiPoint,
    MultiLineString,
    MultiCurve,
    MultiPolygon,
    MultiSurface,
    Collection,
};

constexpr std::array<std::string_view, 12> names = {
    "POINT",      "LINESTRING",      "CIRCULARSTRING", "COMPOUNDCURVE", "POLYGON",      "CURVEPOLYGON",
    "MULTIPOINT", "MULTILINESTRING", "MULTICURVE",     "MULTIPOLYGON",  "MULTISURFACE", "GEOMETRYCOLLECTION"};
std::string_view NameOf(Kind kind) { return names[static_cast<std::size_t>(kind)]; }

constexpr double mostSweepOfOneArc = 0.75 * detail::twoPi;

/// What plan and space have in common.
struct Plan {
    using Point = Point2D;
    using Line = Line2D;
    using Arc = Arc2D;
    using LineString = LineString2D;
    using Polyline = Polyline2D;
    using Element = IPolyline2DElement;
    using Polygon = Polygon2D;
    using RingCurve = RingCurve2D;
    using PolygonCurve = PolygonCurve2D;
    static constexpr std::string_view tag{};
    static constexpr unsigned int axes = 2;
};
struct Space {
    using Point = Point3D;
    using Line = Line3D;
    using Arc = Arc3D;
    using LineString = LineString3D;
    using Polyline = Polyline3D;
    using Element = IPolyline3DElement;
    using Polygon = Polygon3D;
    using RingCurve = RingCurve3D;
    using PolygonCurve = PolygonCurve3D;
    static constexpr std::string_view tag = "Z ";
    static constexpr unsigned int axes = 3;
};

/// A run of straight segments or of arcs by start, middle, end, middle ...
template <class World>
struct Run {
    bool isArc = false;
    std::vector<typename World::Point> points;
};

// --- Writing

/// A geometry on its way into the text: `body` is what follows name and tag.
struct Piece {
    Kind kind = Kind::Point;
    std::string_view tag;
    std::string body;
};

std::string Tagged(const Piece& piece) {
    std::string text(NameOf(piece.kind));
    text += ' ';
    return (text += piece.tag) += piece.body;
}

constexpr std::string_view empty = "EMPTY";

/// "(a, b)" of texts.
class List {
public:
    void Add(std::string_view item) { (text += text.empty() ? "(" : ", ") += item; }
    std::string Close() { return text.empty() ? std::string(empty) : text + ')'; }

private:
    std::string text;
};

template <class Point>
bool AppendPosition(const Point& point, int size, std::string& text) {
    for (int axis = 0; axis < size; ++axis) {
        const double value = point[axis];
        if (!std::isfinite(value)) return false;
        if (axis > 0) text += ' ';
        detail::AppendDigits(text, value);
    }
    return true;
}

template <class Point>
bool WritePoints(const std::vector<Point>& points, std::string& body) {
    constexpr int size = std::is_same_v<Point, Point2D> ? 2 : 3;
    body = "(";
    for (const Point& point : points) {
        if (body.size() > 1) body += ", ";
        if (!AppendPosition(point, size, body)) return false;
    }
    body += ')';
    return true;
}

template <class World>
bool AppendArc(const typename World::Arc& arc, std::vector<Run<World>>& runs) {
    const double length = arc.GetLength();
    const bool isOne = std::abs(arc.GetAngle().GetRadians()) <= mostSweepOfOneArc;
    if (!(length > 0.0)) return false;
    Run<World> run{true, {arc.GetStart()}};
    for (const double share : {0.25, 0.5, 0.75}) {
        if (isOne && share != 0.5) continue;
        run.points.emplace_back();
        if (!arc.GetPointOffsetFromStart(share * length, run.points.back())) return false;
    }
    const bool isFull = std::abs(arc.GetAngle().GetRadians()) == detail::twoPi;
    run.points.push_back(isFull ? arc.GetStart() : arc.GetEnd());
    runs.push_back(std::move(run));
    return true;
}

template <class World, class Chain>
bool AppendElements(const Chain& chain, double height, std::vector<Run<World>>& runs);

template <class Curve>
bool AppendSamples(const Curve& curve, double height, std::vector<Run<Plan>>& runs) {
    Run<Plan> run;
    if (!(height > 0.0)) return false;
    if constexpr (std::is_same_v<Curve, Parabola>) {
        if (!curve.MakePointsUsingHeight(curve.GetStart().GetX(), curve.GetEnd().GetX(), run.points, height))
            return false;
    } else {
        std::vector<IPolyline2DElement::PolylineElementPoint> samples;
        if (!curve.MakePointsAndTangentsUsingHeight(0.0, curve.GetLength(), samples, height)) return false;
        for (const auto& sample : samples) run.points.push_back(sample.point);
    }
    if (run.points.size() < 2) return false;
    run.points.front() = curve.GetStart();
    run.points.back() = curve.GetEnd();
    runs.push_back(std::move(run));
    return true;
}

template <class World>
bool AppendElement(const IGeometry& element, double height, std::vector<Run<World>>& runs) {
    switch (element.GetType()) {
        case MathTypes::Line2D:
        case MathTypes::Line3D: {
            const auto& line = static_cast<const typename World::Line&>(element);
            runs.push_back({false, {line.GetStart(), line.GetEnd()}});
            return true;
        }
        case MathTypes::LineString2D:
        case MathTypes::LineString3D:
            runs.push_back({false, static_cast<const typename World::LineString&>(element).GetPoints()});
            return runs.back().points.size() > 1;
        case MathTypes::Arc2D:
        case MathTypes::Arc3D:
            return AppendArc<World>(static_cast<const typename World::Arc&>(element), runs);
        case MathTypes::Polyline2D:
        case MathTypes::Polyline3D:
            return AppendElements<World>(static_cast<const typename World::Polyline&>(element), height, runs);
        default:
            break;
    }
    if constexpr (std::is_same_v<World, Plan>) {
        switch (element.GetType()) {
            case MathTypes::Clothoid:
                return AppendSamples(static_cast<const Clothoid&>(element), height, runs);
            case MathTypes::Spiral2D:
                return AppendSamples(static_cast<const Spiral2D&>(element), height, runs);
            case MathTypes::Parabola:
                return AppendSamples(static_cast<const Parabola&>(element), height, runs);
            default:
                break;
        }
    }
    return false;
}

template <class World, class Chain>
bool AppendElements(const Chain& chain, double height, std::vector<Run<World>>& runs) {
    for (unsigned int i = 0; i < chain.GetNrOfElements(); ++i) {
        if (!AppendElement<World>(chain.GetElementAtIndex(i), height, runs)) return false;
    }
    return true;
}

/// Ends each run exactly where the next one starts, where the two are the same place.
template <class World>
bool Join(std::vector<Run<World>>& runs, bool isRing) {
    for (std::size_t i = 0; i + (isRing ? 0 : 1) < runs.size(); ++i) {
        const auto& next = runs[(i + 1) % runs.size()].points.front();
        if (!runs[i].points.back().IsEqualTo(next, detail::standardUserTolerance)) return false;
        runs[i].points.back() = next;
    }
    return true;
}

/// A curve that is no chain: of one run.
template <class World>
bool WriteRun(const Run<World>& run, Piece& piece) {
    piece.kind = run.isArc ? Kind::CircularString : Kind::LineString;
    piece.tag = World::tag;
    return WritePoints(run.points, piece.body);
}

template <class World>
bool WriteChain(std::vector<Run<World>>& runs, bool isRing, Piece& piece) {
    if (!Join(runs, isRing)) return false;
    List list;
    for (const Run<World>& run : runs) {
        Piece part;
        if (!WriteRun(run, part)) return false;
        list.Add(run.isArc ? Tagged(part) : part.body);
    }
    piece = {Kind::CompoundCurve, World::tag, list.Close()};
    return true;
}

template <class World>
bool WriteElement(const IGeometry& element, double height, Piece& piece) {
    std::vector<Run<World>> runs;
    return AppendElement<World>(element, height, runs) && WriteRun(runs.front(), piece);
}

template <class World>
bool WritePolygon(const typename World::Polygon& polygon, Piece& piece) {
    List rings;
    const auto add = [&rings](std::vector<typename World::Point> points) {
        if (points.size() < 3) return false;
        const auto &first = points.front(), &last = points.back();
        bool isClosed = true;
        for (int axis = 0; axis < static_cast<int>(World::axes); ++axis)
            isClosed = isClosed && first[axis] == last[axis];
        if (!isClosed) points.push_back(typename World::Point(first));
        std::string body;
        if (points.size() < 4 || !WritePoints(points, body)) return false;
        rings.Add(body);
        return true;
    };
    const unsigned int holes = polygon.GetNumHoleBoundaries();
    const bool isEmpty = polygon.GetPoints().empty() && holes == 0;
    if (!isEmpty && !add(polygon.GetPoints())) return false;
    for (unsigned int i = 0; i < holes; ++i) {
        if (!add(polygon.GetHoleBoundary(i).GetPoints())) return false;
    }
    piece = {Kind::Polygon, World::tag, rings.Close()};
    return true;
}

template <class World>
bool WriteCurvePolygon(const typename World::PolygonCurve& polygon, Piece& piece) {
    List rings;
    const auto add = [&rings](const typename World::RingCurve& ring) {
        std::vector<Run<World>> runs;
        Piece part;
        if (!AppendElements<World>(ring, 0.0, runs) || runs.empty()) return false;
        if (runs.size() == 1) {
            if (!Join(runs, true) || !WriteRun(runs.front(), part)) return false;
        } else if (!WriteChain(runs, true, part)) {
            return false;
        }
        if (runs.size() == 1 && !runs.front().isArc && runs.front().points.size() < 4) return false;
        rings.Add(part.kind == Kind::LineString ? part.body : Tagged(part));
        return true;
    };
    const unsigned int inner = polygon.GetNumInnerRings();
    const bool isEmpty = polygon.GetBoundary().GetNrOfElements() == 0 && inner == 0;
    if (!isEmpty && !add(polygon.GetBoundary())) return false;
    for (unsigned int i = 0; i < inner; ++i) {
        if (!add(polygon.GetInnerRingAtIndex(i))) return false;
    }
    piece = {Kind::CurvePolygon, World::tag, rings.Close()};
    return true;
}

template <class World>
bool WriteLineString(const typename World::LineString& string, Piece& piece) {
    if (string.GetSize() > 0) return WriteElement<World>(string, 0.0, piece);
    piece = {Kind::LineString, World::tag, std::string(empty)};
    return true;
}

template <class World>
bool WritePolyline(const typename World::Polyline& chain, double height, Piece& piece) {
    std::vector<Run<World>> runs;
    return AppendElements<World>(chain, height, runs) && WriteChain(runs, false, piece);
}

template <class Point>
bool WritePoint(const Point& point, int size, std::string_view tag, Piece& piece) {
    piece = {Kind::Point, tag, "("};
    const bool isWritten = AppendPosition(point, size, piece.body);
    piece.body += ')';
    return isWritten;
}

bool WriteGeometry(const IGeometry& geometry, double height, Piece& piece) {
    switch (geometry.GetType()) {
        case MathTypes::Point2D:
            return WritePoint(static_cast<const Point2D&>(geometry), 2, "", piece);
        case MathTypes::Point2DM:
            return WritePoint(static_cast<const Point2DM&>(geometry), 3, "M ", piece);
        case MathTypes::Point3D:
            return WritePoint(static_cast<const Point3D&>(geometry), 3, "Z ", piece);
        case MathTypes::LineString2D:
            return WriteLineString<Plan>(static_cast<const LineString2D&>(geometry), piece);
        case MathTypes::LineString3D:
            return WriteLineString<Space>(static_cast<const LineString3D&>(geometry), piece);
        case MathTypes::Line2D:
        case MathTypes::Arc2D:
        case MathTypes::Clothoid:
        case MathTypes::Spiral2D:
        case MathTypes::Parabola:
            return WriteElement<Plan>(geometry, height, piece);
        case MathTypes::Line3D:
        case MathTypes::Arc3D:
            return WriteElement<Space>(geometry, height, piece);
        case MathTypes::Circle2D: {
            const auto& circle = static_cast<const Circle2D&>(geometry);
            const Arc2D arc(circle.GetPointOnCircle(Angle()), circle.GetCenter(), Angle(detail::twoPi));
            return WriteElement<Plan>(arc, height, piece);
        }
        case MathTypes::Circle3D: {
            const auto& circle = static_cast<const Circle3D&>(geometry);
            const Arc3D arc(circle.GetPointOnCircle(Angle()), circle.GetCenter(), Angle(detail::twoPi),
                            circle.GetPlane());
            return WriteElement<Space>(arc, height, piece);
        }
        case MathTypes::Polyline2D:
            return WritePolyline<Plan>(static_cast<const Polyline2D&>(geometry), height, piece);
        case MathTypes::Polyline3D:
            return WritePolyline<Space>(static_cast<const Polyline3D&>(geometry), height, piece);
        case MathTypes::Polygon2D:
            return WritePolygon<Plan>(static_cast<const Polygon2D&>(geometry), piece);
        case MathTypes::Polygon3D:
            return WritePolygon<Space>(static_cast<const Polygon3D&>(geometry), piece);
        case MathTypes::PolygonCurve2D:
            return WriteCurvePolygon<Plan>(static_cast<const PolygonCurve2D&>(geometry), piece);
        case MathTypes::PolygonCurve3D:
            return WriteCurvePolygon<Space>(static_cast<const PolygonCurve3D&>(geometry), piece);
        default:
            return false;
    }
}

/// The kind of a set, and that of the members that go into it without their names.
struct SetKind {
    Kind kind;
    Kind bare;
    std::array<Kind, 3> members;
};
constexpr std::array<SetKind, 5> setKinds = {{
    {Kind::MultiPoint, Kind::Point, {Kind::Point, Kind::Point, Kind::Point}},
    {Kind::MultiLineString, Kind::LineString, {Kind::LineString, Kind::LineString, Kind::LineString}},
    {Kind::MultiCurve, Kind::LineString, {Kind::LineString, Kind::CircularString, Kind::CompoundCurve}},
    {Kind::MultiPolygon, Kind::Polygon, {Kind::Polygon, Kind::Polygon, Kind::Polygon}},
    {Kind::MultiSurface, Kind::Polygon, {Kind::Polygon, Kind::CurvePolygon, Kind::CurvePolygon}},
}};
bool Takes(const SetKind& set, Kind kind) {
    return std::find(set.members.begin(), set.members.end(), kind) != set.members.end();
}

bool WriteSet(const std::vector<Piece>& pieces, std::string& text) {
    const bool isOneTag = std::all_of(pieces.begin(), pieces.end(),
                                      [&pieces](const Piece& piece) { return piece.tag == pieces.front().tag; });
    if (!isOneTag) return false;
    const auto* const set = std::find_if(setKinds.begin(), setKinds.end(), [&pieces](const SetKind& candidate) {
        return !pieces.empty() && std::all_of(pieces.begin(), pieces.end(),
                                              [&](const Piece& piece) { return Takes(candidate, piece.kind); });
    });
    List list;
    for (const Piece& piece : pieces) {
        const bool isBare = set != setKinds.end() && piece.kind == set->bare;
        list.Add(isBare ? piece.body : Tagged(piece));
    }
    const Kind kind = set != setKinds.end() ? set->kind : Kind::Collection;
    text = Tagged({kind, pieces.empty() ? std::string_view() : pieces.front().tag, list.Close()});
    return true;
}

// --- Reading

struct Position {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double m = 0.0;
};

/// What follows x and y; told by a tag or by the first position.
struct Ordinates {
    bool isKnown = false;
    bool hasZ = false;
    bool hasM = false;

    bool operator==(const Ordinates&) const = default;
};

template <class World>
typename World::Point PointOf(const Position& p) {
    if constexpr (std::is_same_v<World, Plan>) {
        return {p.x, p.y};
    } else {
        return {p.x, p.y, p.z};
    }
}

/// The arc from a by m to b; false for points on a line, and for a full circle in space, whose plane three points do
/// not tell.
bool MakeArc(const Point2D& a, const Point2D& m, const Point2D& b, Arc2D& arc) { return arc.Set(a, m, b); }
bool MakeArc(const Point3D& a, const Point3D& m, const Point3D& b, Arc3D& arc) {
    const Vec3D p = m - a;
    const Vec3D q = b - a;
    const Vec3D normal = p.CrossProduct(q);
    const double longest = std::sqrt((std::max)({p.NormSquared(), q.NormSquared(), (q - p).NormSquared()}));
    if (!(normal.Length() > detail::numericalZero * longest)) return false;
    const Vec3D toCenter = (q.CrossProduct(normal) * p.NormSquared() + normal.CrossProduct(p) * q.NormSquared()) /
                           (2.0 * normal.NormSquared());
    if (!std::isfinite(toCenter.NormSquared())) return false;
    // Seen from the tip of the normal the three points run counter-clockwise.
    const double sine = q.CrossProduct(toCenter).DotProduct(normal) / normal.Length();
    const double sweep = std::atan2(sine, -toCenter.DotProduct(q - toCenter));
    arc.Set(a, a + toCenter, Angle(sweep > 0.0 ? sweep : sweep + detail::twoPi), Plane3D(a, normal));
    return true;
}

template <class Chain>
bool Give(Chain& chain, std::unique_ptr<IGeometry> element) {
    if constexpr (std::is_same_v<Chain, RingCurve2D> || std::is_same_v<Chain, RingCurve3D>) {
        if (!chain.AppendElement(element.get())) return false;
    } else {
        using Element = std::conditional_t<std::is_same_v<Chain, Polyline2D>, IPolyline2DElement, IPolyline3DElement>;
        if (!chain.AppendElement(static_cast<Element*>(element.get()))) return false;
    }
    (void)element.release();
    return true;
}

class Reader {
public:
    explicit Reader(std::string_view source) : text(source) {}

    bool Read(std::vector<std::unique_ptr<IGeometry>>& geometries) {
        if (!ReadTagged(0)) return false;
        SkipSpace();
        if (at < text.size()) return Fail("there is text after the geometry");
        geometries.insert(geometries.end(), std::make_move_iterator(found.begin()),
                          std::make_move_iterator(found.end()));
        return true;
    }
    void Tell(Wkt::Error& error) const {
        const std::string_view before = text.substr(0, at);
        const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
        error.offset = at;
        error.line = 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
        error.column = at - lineStart + 1;
        error.reason = reason;
    }

private:
    static constexpr int mostNesting = 32;

    struct Part {
        bool isArc = false;
        std::size_t offset = 0;
        std::vector<Position> positions;
    };

    bool Fail(std::string_view why) {
        reason = why;
        return false;
    }
    bool FailAt(std::size_t offset, std::string_view why) {
        at = offset;
        return Fail(why);
    }

    static bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    static bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
    char Peek() const { return at < text.size() ? text[at] : '\0'; }
    void SkipSpace() {
        while (at < text.size() && IsSpace(text[at])) ++at;
    }
    bool Take(char wanted) {
        SkipSpace();
        if (at == text.size() || text[at] != wanted) return false;
        ++at;
        return true;
    }
    /// The letters here in capitals; nothing is taken.
    std::string PeekWord() {
        SkipSpace();
        std::string word;
        for (std::size_t i = at; i < text.size() && IsLetter(text[i]); ++i) {
            word += static_cast<char>(text[i] & ~0x20);
        }
        return word;
    }
    bool TakeWord(std::string_view wanted) {
        if (PeekWord() != wanted) return false;
        at += wanted.size();
        return true;
    }

    /// Name and tag; the tag has to go with what is known.
    bool ReadName(Kind& kind) {
        std::string word = PeekWord();
        const std::size_t start = at;
        std::string_view tag;
        const auto find = [&kind](std::string_view name) {
            const auto* const place = std::find(names.begin(), names.end(), name);
            if (place != names.end()) kind = static_cast<Kind>(place - names.begin());
            return place != names.end();
        };
        bool isFound = find(word);
        for (const std::string_view glued : {"ZM", "Z", "M"}) {
            if (isFound || !word.ends_with(glued)) continue;
            isFound = find(std::string_view(word).substr(0, word.size() - glued.size()));
            if (isFound) tag = glued;
        }
        if (!isFound) return Fail("expected the name of a geometry");
        at += word.size();
        for (const std::string_view apart : {"ZM", "Z", "M"}) {
            if (tag.empty() && TakeWord(apart)) tag = apart;
        }
        if (tag.empty()) return true;
        const Ordinates told{true, tag.front() == 'Z', tag.back() == 'M'};
        if (ordinates.isKnown && ordinates != told) return FailAt(start, "other coordinates than around it");
        ordinates = told;
        return true;
    }

    /// "(item, item)"
    template <class Item>
    bool ReadList(Item&& item) {
        if (!Take('(')) return Fail("expected an opening parenthesis");
        do {
            if (!item()) return false;
        } while (Take(','));
        return Take(')') || Fail("expected a comma or a closing parenthesis");
    }

    bool ReadNumber(double& value) {
        SkipSpace();
        const std::size_t start = at;
        if (Peek() == '+') ++at;
        const char* const end = text.data() + text.size();
        const std::from_chars_result result = std::from_chars(text.data() + at, end, value);
        if (result.ec == std::errc::invalid_argument) return FailAt(start, "expected a number");
        if (result.ec != std::errc() || !std::isfinite(value))
            return FailAt(start, "a number that is no finite double");
        at = static_cast<std::size_t>(result.ptr - text.data());
        const char next = Peek();
        const bool isEnd = at == text.size() || IsSpace(next) || next == ',' || next == ')';
        return isEnd || Fail("expected a space, a comma or a closing parenthesis");
    }
    bool ReadPosition(Position& position) {
        std::array<double, 4> values{};
        std::size_t count = 0;
        SkipSpace();
        const std::size_t start = at;
        do {
            if (!ReadNumber(values[count++])) return false;
            SkipSpace();
        } while (count < 4 && at < text.size() && Peek() != ',' && Peek() != ')');
        if (count < 2) return Fail("expected a number");
        if (!ordinates.isKnown) ordinates = {true, count > 2, count > 3};
        if (count != 2U + (ordinates.hasZ ? 1U : 0U) + (ordinates.hasM ? 1U : 0U)) {
            return FailAt(start, "more or fewer numbers than a position has here");
        }
        position = {values[0], values[1], ordinates.hasZ ? values[2] : 0.0, ordinates.hasM ? values[count - 1] : 0.0};
        return true;
    }
    bool ReadPart(bool isArc, Part& part) {
        SkipSpace();
        part.isArc = isArc;
        part.offset = at;
        const bool isRead = ReadList([&] {
            part.positions.emplace_back();
            return ReadPosition(part.positions.back());
        });
        if (!isRead) return false;
        const std::size_t count = part.positions.size();
        if (isArc && (count < 3 || count % 2 == 0)) return FailAt(part.offset, "arcs need 3, 5, 7 ... points");
        return count > 1 || FailAt(part.offset, "a line string needs two points");
    }
    /// A part of a chain or ring: bare, or with its name.
    bool ReadMember(std::vector<Part>& parts, bool mayBeChain) {
        SkipSpace();
        Kind kind = Kind::LineString;
        const std::size_t start = at;
        if (Peek() != '(' && !ReadName(kind)) return false;
        if (kind == Kind::CompoundCurve && mayBeChain) return ReadChain(parts);
        if (kind != Kind::LineString && kind != Kind::CircularString) {
            return FailAt(start, "this geometry cannot stand here");
        }
        parts.emplace_back();
        return ReadPart(kind == Kind::CircularString, parts.back());
    }
    static bool AreSame(const Position& a, const Position& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }
    bool ReadChain(std::vector<Part>& parts) {
        return ReadList([&] {
            const std::size_t known = parts.size();
            if (!ReadMember(parts, false)) return false;
            return known == 0 || AreSame(parts[known - 1].positions.back(), parts[known].positions.front()) ||
                   FailAt(parts[known].offset, "a curve that does not start where the one before it ends");
        });
    }
    bool ReadRing(std::vector<Part>& parts) {
        SkipSpace();
        const std::size_t start = at;
        if (!ReadMember(parts, true)) return false;
        if (!AreSame(parts.front().positions.front(), parts.back().positions.back())) {
            return FailAt(start, "a ring that does not close");
        }
        const bool isFlat = parts.size() == 1 && !parts.front().isArc && parts.front().positions.size() < 4;
        return !isFlat || FailAt(start, "a ring needs four positions, the last one as the first");
    }

    template <class World>
    static std::vector<typename World::Point> PointsOf(const Part& part) {
        std::vector<typename World::Point> points;
        points.reserve(part.positions.size());
        for (const Position& position : part.positions) points.push_back(PointOf<World>(position));
        return points;
    }
    /// Gives each element of the part to the chain.
    template <class World, class Chain>
    bool AppendPart(const Part& part, Chain& chain) {
        using Line = typename World::Line;
        std::vector<typename World::Point> points = PointsOf<World>(part);
        if (!part.isArc) {
            if (points.size() == 2) return Give(chain, std::make_unique<Line>(points[0], points[1]));
            return Give(chain, std::make_unique<typename World::LineString>(std::move(points)));
        }
        for (std::size_t i = 0; i + 2 < points.size(); i += 2) {
            const auto &a = points[i], &m = points[i + 1], &b = points[i + 2];
            typename World::Arc arc;
            if (MakeArc(a, m, b, arc)) {
                if (!Give(chain, std::make_unique<typename World::Arc>(arc))) return false;
            } else if ((m - a).DotProduct(b - m) >= 0.0) {
                if (!Give(chain, std::make_unique<Line>(a, b))) return false;
            } else {
                return FailAt(part.offset, "three points that are on no circle");
            }
        }
        return true;
    }
    template <class World>
    bool MakeChain(const std::vector<Part>& parts, typename World::Polyline& chain) {
        return std::all_of(parts.begin(), parts.end(),
                           [&](const Part& part) { return AppendPart<World>(part, chain); });
    }
    template <class World>
    bool MakeCurve(Kind kind, const std::vector<Part>& parts) {
        if (kind == Kind::LineString) {
            using LineString = typename World::LineString;
            const bool isEmpty = parts.empty();
            found.push_back(
                std::make_unique<LineString>(isEmpty ? LineString() : LineString(PointsOf<World>(parts[0]))));
            return true;
        }
        typename World::Polyline chain;
        if (!MakeChain<World>(parts, chain)) return false;
        if (kind == Kind::CircularString && chain.GetNrOfElements() == 1) {
            found.push_back(std::unique_ptr<IGeometry>(std::as_const(chain).GetElementAtIndex(0).Clone()));
        } else {
            found.push_back(std::make_unique<typename World::Polyline>(std::move(chain)));
        }
        return true;
    }
    template <class World>
    bool MakePolygon(const std::vector<std::vector<Part>>& rings) {
        auto polygon = std::make_unique<typename World::Polygon>();
        for (std::size_t i = 0; i < rings.size(); ++i) {
            const auto points = PointsOf<World>(rings[i].front());
            i == 0 ? polygon->AppendPoints(points) : polygon->AppendHoleBoundary(typename World::LineString(points));
        }
        found.push_back(std::move(polygon));
        return true;
    }
    template <class World>
    bool MakeCurvePolygon(const std::vector<std::vector<Part>>& rings) {
        using RingCurve = typename World::RingCurve;
        auto polygon = std::make_unique<typename World::PolygonCurve>();
        for (std::size_t i = 0; i < rings.size(); ++i) {
            auto ring = std::make_unique<RingCurve>();
            for (const Part& part : rings[i]) {
                if (!AppendPart<World>(part, *ring)) return false;
            }
            if (i == 0) {
                polygon->GetBoundary() = std::move(*ring);
            } else if (polygon->AppendInnerRing(ring.get())) {
                (void)ring.release();
            }
        }
        found.push_back(std::move(polygon));
        return true;
    }

    bool ReadPoint(bool isBare) {
        Position p;
        if (!isBare && !Take('(')) return Fail("expected an opening parenthesis");
        if (!ReadPosition(p)) return false;
        if (!isBare && !Take(')')) return Fail("expected a closing parenthesis");
        if (ordinates.hasZ) {
            found.push_back(std::make_unique<Point3D>(p.x, p.y, p.z));
        } else if (ordinates.hasM) {
            found.push_back(std::make_unique<Point2DM>(p.x, p.y, p.m));
        } else {
            found.push_back(std::make_unique<Point2D>(p.x, p.y));
        }
        return true;
    }
    bool ReadCurve(Kind kind) {
        std::vector<Part> parts;
        if (!TakeWord(empty)) {
            if (kind != Kind::CompoundCurve) parts.emplace_back();
            const bool isRead =
                parts.empty() ? ReadChain(parts) : ReadPart(kind == Kind::CircularString, parts.front());
            if (!isRead) return false;
        }
        return ordinates.hasZ ? MakeCurve<Space>(kind, parts) : MakeCurve<Plan>(kind, parts);
    }
    bool ReadSurface(Kind kind) {
        std::vector<std::vector<Part>> rings;
        const auto readRing = [&] {
            rings.emplace_back();
            SkipSpace();
            if (kind == Kind::Polygon && Peek() != '(') return Fail("expected an opening parenthesis");
            return ReadRing(rings.back());
        };
        if (!TakeWord(empty) && !ReadList(readRing)) return false;
        if (kind == Kind::Polygon) return ordinates.hasZ ? MakePolygon<Space>(rings) : MakePolygon<Plan>(rings);
        return ordinates.hasZ ? MakeCurvePolygon<Space>(rings) : MakeCurvePolygon<Plan>(rings);
    }
    bool ReadSet(const SetKind& set) {
        return ReadList([&] {
            SkipSpace();
            const std::size_t start = at;
            const bool isNumber = Peek() != '(' && !IsLetter(Peek());
            if (set.kind == Kind::MultiPoint && isNumber) return ReadPoint(true);
            Kind kind = set.bare;
            if (Peek() != '(' && PeekWord() != empty && !ReadName(kind)) return false;
            return Takes(set, kind) ? ReadBody(kind, 0) : FailAt(start, "this geometry cannot stand here");
        });
    }
    /// What follows name and tag.
    bool ReadBody(Kind kind, int nesting) {
        switch (kind) {
            case Kind::Point:
                return TakeWord(empty) || ReadPoint(false);
            case Kind::LineString:
            case Kind::CircularString:
            case Kind::CompoundCurve:
                return ReadCurve(kind);
            case Kind::Polygon:
            case Kind::CurvePolygon:
                return ReadSurface(kind);
            case Kind::Collection:
                return TakeWord(empty) || ReadList([&] {
                           const Ordinates around = ordinates;
                           const bool isRead = ReadTagged(nesting + 1);
                           ordinates = around;
                           return isRead;
                       });
            default:
                return TakeWord(empty) ||
                       ReadSet(*std::find_if(setKinds.begin(), setKinds.end(),
                                             [kind](const SetKind& set) { return set.kind == kind; }));
        }
    }
    bool ReadTagged(int nesting) {
        if (nesting > mostNesting) return Fail("sets nested too deeply");
        Kind kind = Kind::Point;
        return ReadName(kind) && ReadBody(kind, nesting);
    }

    std::string_view text;
    std::size_t at = 0;
    std::string_view reason;
    Ordinates ordinates;
    std::vector<std::unique_ptr<IGeometry>> found;
};

}  // namespace

bool Wkt::Write(const IGeometry& geometry, std::string& text, double height) {
    Piece piece;
    if (!WriteGeometry(geometry, height, piece)) return false;
    text = Tagged(piece);
    return true;
}

bool Wkt::Write(const std::vector<const IGeometry*>& geometries, std::string& text, double height) {
    std::vector<Piece> pieces(geometries.size());
    for (std::size_t i = 0; i < geometries.size(); ++i) {
        if (geometries[i] == nullptr || !WriteGeometry(*geometries[i], height, pieces[i])) return false;
    }
    return WriteSet(pieces, text);
}

bool Wkt::Write(const std::vector<std::unique_ptr<IGeometry>>& geometries, std::string& text, double height) {
    std::vector<const IGeometry*> plain;
    plain.reserve(geometries.size());
    for (const std::unique_ptr<IGeometry>& geometry : geometries) plain.push_back(geometry.get());
    return Write(plain, text, height);
}

bool Wkt::Read(std::string_view text, std::vector<std::unique_ptr<IGeometry>>& geometries, Error& error) {
    Reader reader(text);
    if (reader.Read(geometries)) return true;
    reader.Tell(error);
    return false;
}

}  // namespace Kalvio::Math
