#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/FewQuestions.h"
#include "kalvio/core/detail/Lazy.h"
#include "kalvio/curves/detail/Chain.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Kalvio::Math::detail {

enum class RingSide : std::uint32_t;

/// Answers questions about the segments of one chain: the first three by walking along it; the fourth prepares boxes,
/// at the cost of about two walks and 6 bytes a point (8 more for lengths from either end), and later ones are found
/// among these. The answers are the same to the last bit. Any number of threads may ask at once. The owner hands its
/// points in with each question and calls `Invalidate` when they change.
class SegmentSearch {
public:
    using Points = std::vector<Point2D>;

    void Invalidate() noexcept {
        index.Invalidate();
        questions.Reset();
    }

    /// As the free functions of these names.
    bool FindNearest(const Points& points, const Point2D& p, double tolerance, ChainFoot<Point2D>& foot,
                     bool withClosing = false) const;
    bool LengthFromStart(const Points& points, const Point2D& p, double& length, double tolerance) const;
    bool LengthFromEnd(const Points& points, const Point2D& p, double& length, double tolerance) const;
    void LengthsAlong(const Points& points, const Point2D& p, double tolerance, std::vector<double>& lengths) const;
    bool TangentAt(const Points& points, const Point2D& p, double tolerance, Vec2D& tangent) const;
    RingSide FindRingSide(const Points& ring, const Point2D& p, double tolerance) const;
    /// Length from the start to a point of the chain. Never a question of its own: it follows one.
    double LengthTo(const Points& points, std::size_t point) const;

private:
    struct Index;

    // The index from the fourth question on; null before.
    const Index* Ask(const Points& points) const;

    Lazy<std::shared_ptr<const Index>> index;
    FewQuestions questions;
};

/// Opens the search of a line string or polygon to the queries about it.
struct SearchAccess {
    template <class Owner>
    static const SegmentSearch& Of(const Owner& owner) {
        return owner.search;
    }
};

}  // namespace Kalvio::Math::detail
