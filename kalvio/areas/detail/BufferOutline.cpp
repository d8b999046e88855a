#include "kalvio/areas/detail/BufferOutline.h"

#include "kalvio/areas/detail/ChainPath.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kalvio::Math::detail {

namespace {

constexpr double ofJoins = 0.5;       // of the height: what chords and mitres leave an arc about a corner by
constexpr double ofCorners = 0.25;    // of the height: what corners that are left out stand out by
constexpr double ofTolerance = 0.25;  // what a mitre stands out by that takes the place of an arc

// On the circle of the arc that begins at the corner, after an angle.
PlanePoint PointAt(const AreaOverlay::Corner& corner, double angle) {
    const PlanePoint arm = corner.at - corner.center;
    return corner.center + (arm * std::cos(angle) - RightOf(arm) * std::sin(angle));
}

}  // namespace

BufferOutline::BufferOutline(const Style& given)
    : style(given),
      reach(std::abs(given.distance)),
      excess(given.height > 0.0 ? ofJoins * given.height : ofTolerance * given.tolerance),
      isRound(given.shape.join == BufferCreator::Join::Round) {
    if (!(style.height > 0.0) || !(reach > 0.0)) return;
    constexpr double most = 2500.0;  // chords of a quarter turn
    const double quarters = 0.25 * pi / std::acos(std::max(0.0, 1.0 - ofJoins * style.height / reach));
    const int count = 4 * static_cast<int>(std::ceil(std::clamp(quarters, 2.0, most)));
    compass.reserve(static_cast<std::size_t>(count));
    for (int k = 0; k < count; ++k) {
        const double angle = 2.0 * pi * k / count;
        compass.push_back({std::cos(angle), std::sin(angle)});
    }
}

void BufferOutline::AddPoint(const PlanePoint& point) {
    if (style.shape.end == BufferCreator::End::Flat) return;
    loops.emplace_back();
    if (style.shape.end == BufferCreator::End::Square) {
        for (const PlanePoint& way : {PlanePoint{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}) {
            GoTo(point + way * reach);
        }
    } else if (compass.empty()) {
        loops.back() = {{{point.x - reach, point.y}, 1, point}, {{point.x + reach, point.y}, 1, point}};
    } else {
        for (const PlanePoint& way : compass) GoTo(point + way * reach);
    }
}

void BufferOutline::AddRing(Path ring) {
    DropCorners(ring, true);
    Follow(WaysOf(ring, true), true);
}

bool BufferOutline::IsTold(std::span<const Path> paths, double distance, double tolerance) {
    Extent extent;
    for (const Path& path : paths) {
        for (std::size_t i = 0; i < path.size(); ++i) {
            const AreaOverlay::Corner& corner = path[i];
            extent.Add(Point2D(corner.at.x, corner.at.y));
            if (corner.sense == 0) continue;
            const double half = 0.5 * AreaOverlay::SweepOf(corner, path[(i + 1) % path.size()].at);
            const PlanePoint middle = PointAt(corner, half);
            extent.Add(Point2D(middle.x, middle.y));
        }
    }
    const double apart = std::hypot(extent.maxX - extent.minX, extent.maxY - extent.minY);
    const double moved = std::numeric_limits<double>::epsilon() * distance * distance;
    return !(apart > 0.0) || !std::isfinite(apart) || moved <= std::max(tolerance, numericalZero) * apart;
}

void BufferOutline::AddChain(const Path& chain) {
    const double far = style.tolerance * style.tolerance;
    const bool isPoint = std::all_of(chain.begin(), chain.end(), [&](const AreaOverlay::Corner& corner) {
        return corner.sense == 0 && Square(corner.at - chain.front().at) <= far;
    });
    if (isPoint) return AddPoint(chain.front().at);
    const bool isClosed = IsClosed(chain);
    Path forth = chain;
    if (isClosed) forth.pop_back();
    std::vector<Way> ways = WaysOf(forth, isClosed);
    if (style.height > 0.0 && !ways.empty()) ways = WaysOf(CornersOf(ways, isClosed), isClosed);  // without gaps
    if (ways.empty()) return AddPoint(chain.front().at);                                          // arcs of no radius
    std::vector<Way> waysBack = Reversed(ways);
    if (style.shape.side == BufferCreator::Side::Left) std::swap(ways, waysBack);
    if (style.shape.side != BufferCreator::Side::Both) {
        DropCorners(ways, isClosed);
        Follow(ways, isClosed);
        if (isClosed) loops.emplace_back();
        for (const Way& way : waysBack) loops.back().push_back({way.from, way.sense, way.center});
        if (!isClosed) GoTo(waysBack.back().to);
        return;
    }
    DropCorners(ways, isClosed);
    DropCorners(waysBack, isClosed);
    if (isClosed) {
        Follow(ways, true);
        right.end = static_cast<std::uint32_t>(loops.back().size());
        Follow(waysBack, true);
        left = {right.end, static_cast<std::uint32_t>(right.end + loops.back().size())};
        return;
    }
    const std::size_t firstEnd = ways.size() - 1;
    ways.insert(ways.end(), waysBack.begin(), waysBack.end());
    Follow(ways, true, firstEnd);
}

bool BufferOutline::IsClosed(const Path& chain) const {
    return Square(chain.back().at - chain.front().at) <= style.tolerance * style.tolerance;
}

BufferOutline::Path BufferOutline::ParallelOf(const Path& chain, std::span<Bend> given) {
    isBare = true;
    bends = given;
    const bool isClosed = IsClosed(chain);
    Path path = chain;
    if (isClosed) path.pop_back();
    const std::vector<Way> ways = WaysOf(path, isClosed);
    for (Bend& bend : bends) bend.corner = none;
    Follow(ways, isClosed);
    isBare = false;
    bends = {};
    if (loops.empty()) return {};
    Path parallel = std::move(loops.back());
    loops.pop_back();
    if (isClosed) parallel.push_back({parallel.front().at, 0, {}});
    return parallel;
}

// Reversed ways turn at the same corners by the same angles: where a chain comes straight back on itself, one of both
// turns away.
std::vector<BufferOutline::Way> BufferOutline::Reversed(const std::vector<Way>& ways) const {
    std::vector<Way> reversed;
    reversed.reserve(ways.size());
    for (std::size_t i = ways.size(); i-- > 0;) {
        const Way& way = ways[i];
        reversed.push_back({way.to, way.from, way.endDirection * -1.0, way.direction * -1.0, way.center, -way.sense,
                            IsCollapsed(way.from, way.center, -way.sense), way.length});
    }
    return reversed;
}

BufferOutline::Path BufferOutline::CornersOf(const std::vector<Way>& ways, bool isClosed) {
    Path path;
    path.reserve(ways.size() + 1);
    for (const Way& way : ways) path.push_back({way.from, 0, {}});
    if (!isClosed) path.push_back({ways.back().to, 0, {}});
    return path;
}

bool BufferOutline::IsCollapsed(const PlanePoint& p, const PlanePoint& center, int sense) const {
    return !isBare && sense != 0 && !(std::sqrt(Square(p - center)) + sense * style.distance > 0.0);
}

void BufferOutline::DropCorners(std::vector<Way>& ways, bool isClosed) const {
    if (!(style.height > 0.0)) return;
    Path path = CornersOf(ways, isClosed);
    DropCorners(path, isClosed);
    ways = WaysOf(path, isClosed);
}

// Leaves out corners that turn towards the strips, as long as the segment in their place has all of them within the
// allowance. The triangles between wind like the strips.
void BufferOutline::DropCorners(Path& path, bool isClosed) const {
    const double allowance = ofCorners * style.height;
    if (!isRound || !(allowance > 0.0) || path.size() < 3) return;
    const double side = style.distance < 0.0 ? -1.0 : 1.0;
    Path kept{path.front()};
    PlanePoint candidate = path[1].at;
    PlanePoint limit;  // no segment may turn beyond this direction
    bool isLimited = false;
    const std::size_t count = isClosed ? path.size() + 1 : path.size();
    for (std::size_t k = 2; k < count; ++k) {
        const PlanePoint next = path[k % path.size()].at;
        const PlanePoint arm = candidate - kept.back().at;
        const PlanePoint whole = next - kept.back().at;
        const double square = Square(arm);
        bool isSpared = side * Cross(arm, whole) <= 0.0 && Dot(arm, whole) > 0.0 && Square(whole) >= square;
        if (isSpared && square > allowance * allowance) {
            const double length = std::sqrt(square);
            const double sine = side * allowance / length;
            const double cosine = std::sqrt(1.0 - sine * sine);
            const PlanePoint own = arm * (cosine / length) + RightOf(arm) * (sine / length);
            if (!isLimited || side * Cross(limit, own) > 0.0) limit = own;
            isLimited = true;
        }
        isSpared = isSpared && (!isLimited || side * Cross(limit, whole) >= 0.0);
        if (!isSpared) {
            kept.push_back({candidate, 0, {}});
            isLimited = false;
        }
        candidate = next;
    }
    if (!isClosed) kept.push_back({candidate, 0, {}});
    path = std::move(kept);
}

// Without elements no longer than the tolerance.
std::vector<BufferOutline::Way> BufferOutline::WaysOf(const Path& path, bool isClosed) const {
    std::vector<Way> ways;
    ways.reserve(path.size());
    const std::size_t count = isClosed ? path.size() : path.size() - 1;
    PlanePoint from = path.front().at;
    for (std::size_t i = 0, next = 0; i < count; ++i) {
        const PlanePoint to = path[(i + 1) % path.size()].at;
        if (next < bends.size() && bends[next].corner == i) {
            const Bend& bend = bends[next];
            ways.push_back({path[i].at, to, bend.from, bend.to, {}, path[i].sense, false, 0.0, next++});
            from = to;
            continue;
        }
        if (path[i].sense != 0) {
            AppendArc(ways, path[i], to);
            from = to;
            continue;
        }
        const PlanePoint chord = to - from;
        const double length = std::sqrt(Square(chord));
        if (!(length > style.tolerance)) continue;
        const PlanePoint direction = chord * (1.0 / length);
        ways.push_back({from, to, direction, direction, {}, 0, false, length});
        from = to;
    }
    return ways;
}

void BufferOutline::AppendArc(std::vector<Way>& ways, const AreaOverlay::Corner& corner, const PlanePoint& end) const {
    constexpr double mostOfWay = 6.0;  // radians: less than a turn
    const double sweep = AreaOverlay::SweepOf(corner, end);
    const double parts = std::ceil(std::abs(sweep) / mostOfWay);
    if (!(Square(corner.at - corner.center) > 0.0)) return;
    const bool isCollapsed = IsCollapsed(corner.at, corner.center, corner.sense);
    const auto directionAt = [&](const PlanePoint& p) {
        return RightOf(p - corner.center) * (-corner.sense / std::sqrt(Square(p - corner.center)));
    };
    PlanePoint from = corner.at;
    for (double k = 1.0; k <= parts; k += 1.0) {
        const PlanePoint to = k < parts ? PointAt(corner, sweep * (k / parts)) : end;
        ways.push_back({from, to, directionAt(from), directionAt(to), corner.center, corner.sense, isCollapsed, 0.0});
        from = to;
    }
}

// What comes of rounding is no corner, from which thousands of arcs of a fine tolerance would lead to the source and
// back across each other. Arcs tell their directions the worse, the shorter they are. A segment over the gap stands for
// its sector within the tolerance.
double BufferOutline::GapOfArcs(const Way& a, const Way& b) const {
    constexpr double roundings = 32.0 * std::numeric_limits<double>::epsilon();
    const double shorter = std::sqrt(std::min(Square(a.to - a.from), Square(b.to - b.from)));
    const double rounded = roundings * std::sqrt(Square(a.to)) * (reach / shorter);
    const double spanned = std::sqrt(8.0 * ofTolerance * std::max(style.tolerance, numericalZero) * reach);
    return std::max(style.tolerance, std::min(spanned, rounded));
}

// Where two segments meet the kite between corner and meeting is left out (put on), unless that closes a row of kites
// all around a ring.
BufferOutline::Joint BufferOutline::JointOf(const Way& a, const Way& b, bool isLast) const {
    const PlanePoint from = Beside(a.to, a.endDirection);
    const PlanePoint to = Beside(b.from, b.direction);
    if (std::sqrt(Square(to - from)) <= (a.sense != 0 || b.sense != 0 ? GapOfArcs(a, b) : style.tolerance)) return {};
    const double side = style.distance < 0.0 ? -1.0 : 1.0;
    const double cross = side * Cross(a.endDirection, b.direction);
    const double dot = Dot(a.endDirection, b.direction);
    const bool areSegments = a.sense == 0 && b.sense == 0;
    const PlanePoint meeting = a.to + (RightOf(a.endDirection) + RightOf(b.direction)) * (style.distance / (1.0 + dot));
    if (cross > 0.0 || (cross == 0.0 && dot < 0.0)) {
        const double reached = std::sqrt(2.0 / std::max(1.0 + dot, 0.0));
        const bool isMitred = isRound ? reach * (reached - 1.0) <= excess
                                      : style.shape.join == BufferCreator::Join::Mitred &&
                                            reach * (reached - style.shape.mitreLimit) <= ofTolerance * style.tolerance;
        return {isMitred && areSegments ? Turn::Point : isMitred ? Turn::Mitre : Turn::Convex, meeting};
    }
    const double shorter = std::min(a.length, b.length);
    const bool isHeld = areSegments && (isBare || !isLast) && dot >= 0.0 && reach * -cross <= shorter &&
                        reach * -cross <= shorter * (1.0 + dot);
    return {isHeld ? Turn::Point : Turn::Concave, meeting};
}

void BufferOutline::Follow(const std::vector<Way>& ways, bool isClosed, std::size_t firstEnd) {
    if (ways.empty()) return;
    const std::size_t count = ways.size();
    std::vector<Joint> joints(count);
    for (std::size_t i = 0; i < count; ++i) {
        const bool isLast = i + 1 == count;
        if (isLast && !isClosed) break;
        const bool isEnd = firstEnd != none && (isLast || i == firstEnd);
        joints[i] = isEnd ? Joint{Turn::End, {}} : JointOf(ways[i], ways[(i + 1) % count], isLast);
    }
    AreaOverlay::Ring& loop = loops.emplace_back();
    loop.reserve(2 * count);
    feet.resize(loops.size() - 1);
    std::vector<std::uint32_t>& cornerOf = feet.emplace_back().cornerOf;
    cornerOf.reserve(2 * count);
    feet.back().corners.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Way& way = ways[i];
        const Way& next = ways[(i + 1) % count];
        const Joint& before = joints[i > 0 ? i - 1 : count - 1];
        const Joint& joint = joints[i];
        if (way.isCollapsed) {
            // From one element to the next along their common normal.
            if (before.turn != Turn::Smooth || (i == 0 && !isClosed)) GoTo(way.from);
            GoTo(way.center);
            if (joint.turn != Turn::Smooth || (i + 1 == count && !isClosed)) GoTo(way.to);
        } else if (way.sense != 0) {
            const PlanePoint from = Beside(way.from, way.direction);
            const PlanePoint to = Beside(way.to, way.endDirection);
            const bool isArc = Square(to - from) > style.tolerance * style.tolerance;
            if (way.bend != none && isArc) bends[way.bend].corner = loop.size();
            loop.push_back({from, isArc ? way.sense : 0, way.center});
            GoTo(to);
        } else {
            if (before.turn != Turn::Point) GoTo(Beside(way.from, way.direction));
            if (joint.turn != Turn::Point) GoTo(Beside(way.to, way.endDirection));
        }
        switch (joint.turn) {
            case Turn::Smooth:
                break;
            case Turn::Point:
                GoTo(joint.at);
                break;
            case Turn::Concave:
                if (!isBare) GoTo(way.to);
                break;
            default:
                if (joint.turn == Turn::End) {
                    (i == firstEnd ? right : left).end = static_cast<std::uint32_t>(loop.size() - 1);
                }
                if (way.isCollapsed) GoTo(Beside(way.to, way.endDirection));
                CloseCorner(way, next, joint);
                if (i == firstEnd) left.from = static_cast<std::uint32_t>(loop.size());
                if (next.isCollapsed) GoTo(Beside(next.from, next.direction));
        }
        feet.back().corners.push_back(way.from);
        cornerOf.resize(loop.size(), static_cast<std::uint32_t>(i));
    }
}

AreaOverlay::Discs BufferOutline::LeaveOut() {
    constexpr int steps[] = {2, 4, 8, 16, 32};  // to the corners whose discs are looked at
    constexpr double farthest = 3.0;            // of those, in distances
    constexpr double apart = 16.0;              // tolerances between what is left out and what may show
    double largest = 0.0;
    for (const Path& loop : loops) {
        for (const AreaOverlay::Corner& corner : loop) {
            const PlanePoint& middle = corner.sense == 0 ? corner.at : corner.center;
            const double radius = corner.sense == 0 ? 0.0 : std::sqrt(Square(corner.at - corner.center));
            largest = std::max({largest, std::abs(middle.x) + radius, std::abs(middle.y) + radius});
        }
    }
    const double kept = apart * BorderNoding::ToleranceFor(style.tolerance, largest);
    const double sagitta = compass.empty() ? 0.0 : reach * (1.0 - std::cos(pi / static_cast<double>(compass.size())));
    const double radius = reach - 2.0 * sagitta - kept;
    AreaOverlay::Discs discs{{}, radius + 0.5 * kept};
    if (!(radius > 0.0)) return discs;
    const double far = farthest * farthest * reach * reach;
    for (std::size_t number = 0; number < feet.size(); ++number) {
        const std::vector<PlanePoint>& corners = feet[number].corners;
        const std::vector<std::uint32_t>& cornerOf = feet[number].cornerOf;
        if (corners.empty()) continue;
        Path& loop = loops[number];
        std::size_t size = 0;
        for (std::size_t i = 0, last = 0; i < loop.size(); i = std::max(last, i + 1)) {
            PlanePoint center;
            last = i + 1;
            const auto tryCorners = [&](std::ptrdiff_t direction) {
                for (const int step : steps) {
                    const std::size_t k = cornerOf[i] + static_cast<std::size_t>(direction * step);
                    const double square = k < corners.size() ? Square(loop[i].at - corners[k]) : 2.0 * far;
                    if (square > far) return;
                    if (square > radius * radius) continue;
                    const std::size_t reached = LastWithin(loop, i, last + 1, corners[k], radius);
                    if (reached <= last) continue;
                    last = reached;
                    center = corners[k];
                }
            };
            tryCorners(1);
            tryCorners(-1);
            loop[size] = loop[i];
            if (last > i + 1) {
                loop[size].sense = 0;
                discs.centers.push_back(center);
            }
            ++size;
        }
        loop.resize(size);
    }
    return discs;
}

// The last corner up to which a loop stays in a disc; `from`, which is in it, when that does not reach `least`.
std::size_t BufferOutline::LastWithin(const Path& loop, std::size_t from, std::size_t least, const PlanePoint& center,
                                      double radius) {
    const auto isWithin = [&](std::size_t i) { return Square(loop[i].at - center) <= radius * radius; };
    if (least >= loop.size() || !isWithin(least)) return from;
    std::size_t last = from;
    while (last + 1 < loop.size() && isWithin(last + 1) && IsArcWithin(loop[last], loop[last + 1].at, center, radius)) {
        ++last;
    }
    return last;
}

// Whether an arc with both ends in a disc is all in it; long ones do not count.
bool BufferOutline::IsArcWithin(const AreaOverlay::Corner& corner, const PlanePoint& end, const PlanePoint& center,
                                double radius) {
    if (corner.sense == 0) return true;
    const PlanePoint away = corner.center - center;
    const PlanePoint from = corner.at - corner.center;
    const PlanePoint to = end - corner.center;
    const double side = corner.sense;
    if (std::sqrt(Square(away)) + std::sqrt(Square(from)) <= radius) return true;
    const bool hasFarthest = side * Cross(from, away) >= 0.0 && side * Cross(away, to) >= 0.0;
    return side * Cross(from, to) > 0.0 && !hasFarthest;
}

// Between the ends of the strips on either side of a corner; the last corner of the loop is where the first one ends.
void BufferOutline::CloseCorner(const Way& a, const Way& b, const Joint& joint) {
    if (joint.turn == Turn::Mitre) return GoTo(joint.at);
    const bool isEnd = joint.turn == Turn::End;
    if (isEnd && style.shape.end == BufferCreator::End::Square) {
        GoTo(Beside(a.to, a.endDirection) + a.endDirection * reach);
        GoTo(Beside(b.from, b.direction) - b.direction * reach);
    } else if (isEnd ? style.shape.end == BufferCreator::End::Round : isRound) {
        RoundOff(a, b);
    }
}

void BufferOutline::RoundOff(const Way& a, const Way& b) {
    const int sense = style.distance < 0.0 ? -1 : 1;
    if (compass.empty()) {
        loops.back().back().sense = sense;
        loops.back().back().center = a.to;
        return;
    }
    const auto count = static_cast<int>(compass.size());
    const double step = 2.0 * pi / count;
    const PlanePoint from = RightOf(a.endDirection) * static_cast<double>(sense);
    const double start = sense * std::atan2(from.y, from.x) / step;
    const double turn = std::atan2(std::abs(Cross(a.endDirection, b.direction)), Dot(a.endDirection, b.direction));
    for (double k = std::floor(start) + 1.0; k < start + turn / step; k += 1.0) {
        const int number = (sense * static_cast<int>(k) % count + count) % count;
        GoTo(a.to + compass[static_cast<std::size_t>(number)] * reach);
    }
}

}  // namespace Kalvio::Math::detail
