#pragma once

#include "kalvio/core/Point2D.h"
#include "kalvio/core/detail/BoxHierarchy.h"
#include "kalvio/core/detail/Lanes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Kalvio::Math::detail {

/// Tells for runs of `runSize` segments of a chain, from its start on, that each of their segments surely stays further
/// than `tolerance` from the segments of the same and of the next run, but for the one that follows it. Found in single
/// precision about a point of the chain: where a chain does not come back to itself at once, that is most runs, in a
/// fraction of the time that pairs take.
template <std::size_t runSize>
class QuietRuns {
public:
    QuietRuns(const std::vector<Point2D>& chain, double tolerance) {
        if (chain.size() < 2) return;
        const std::size_t count = chain.size() - 1;
        isQuiet.resize((count + runSize - 1) / runSize, 0);
        for (std::size_t from = 0; from < count; from += blockSize) {
            FindInBlock(chain.data() + from, (std::min)(reachSize, count - from), tolerance, from / runSize);
        }
    }

    bool operator[](std::size_t run) const { return isQuiet[run] != 0; }

private:
    static constexpr std::size_t lanes = RoundedBoxes::size;
    static constexpr std::size_t blockSize = 16 * runSize;
    static constexpr std::size_t ahead = 2 * runSize;  // from the start of a run to the end of the next
    static constexpr std::size_t reachSize = blockSize + ahead;
    static_assert(ahead % lanes == 0);

    void FindInBlock(const Point2D* points, std::size_t count, double tolerance, std::size_t firstRun) {
        std::array<float, reachSize + lanes> x, y;
        const double originX = points[0].GetX(), originY = points[0].GetY();
        for (std::size_t i = 0; i <= count; ++i) {
            x[i] = static_cast<float>(points[i].GetX() - originX);
            y[i] = static_cast<float>(points[i].GetY() - originY);
        }
        for (std::size_t i = count + 1; i % lanes != 0; ++i) x[i] = y[i] = 0.0F;
        float sums[lanes] = {};  // not maxima, which pass over what is no number
        for (std::size_t i = 0; i <= count; i += lanes) {
            for (std::size_t lane = 0; lane < lanes; ++lane)
                sums[lane] += std::abs(x[i + lane]) + std::abs(y[i + lane]);
        }
        // The tolerance, and more than rounding takes from the gaps between boxes.
        const float reach = static_cast<float>(tolerance) * (1.0F + 0x1p-20F) + 1e-37F +
                            ((sums[0] + sums[1]) + (sums[2] + sums[3])) * 0x1p-21F;
        if (!(reach < 1e12F)) return;  // products of coordinates are finite below
        for (std::size_t from = 0; from < (std::min)(count, blockSize); from += runSize) {
            const bool goesOn = from + ahead <= count && GoesOn(x.data() + from, y.data() + from, reach);
            isQuiet[firstRun + from / runSize] =
                goesOn || AreApart(x.data() + from, y.data() + from, (std::min)(ahead, count - from), reach) ? 1 : 0;
        }
    }

    // Whether each segment of a run and the next goes on along the chord of both by more than the reach in x or in y
    // could be: those with others between them are further apart, then.
    static bool GoesOn(const float* x, const float* y, float reach) {
        const float chordX = x[ahead] - x[0], chordY = y[ahead] - y[0];
        const float least = 1.5F * reach * (std::abs(chordX) + std::abs(chordY));
        const FourLanes alongX = FourLanes::Repeat(chordX), alongY = FourLanes::Repeat(chordY);
        FourMask goOn = FourLanes::Repeat(0.0F) <= FourLanes::Repeat(least);
        for (std::size_t i = 0; i < ahead; i += lanes) {
            const FourLanes stepX = FourLanes::Load(x + i + 1) - FourLanes::Load(x + i);
            const FourLanes stepY = FourLanes::Load(y + i + 1) - FourLanes::Load(y + i);
            goOn = goOn & (FourLanes::Repeat(least) < alongX * stepX + alongY * stepY);
        }
        return goOn.Bits() == 15U;
    }

    // The same by the boxes of the segments, of which there are `count`.
    static bool AreApart(const float* x, const float* y, std::size_t count, float reach) {
        std::array<RoundedBoxes, ahead / lanes> boxes;
        RoundedBox box;
        box.minX = box.minY = 1e38F;  // nothing is there
        box.maxX = box.maxY = -1e38F;
        for (std::size_t i = count; i < ahead; ++i) boxes[i / lanes].Set(i % lanes, box);
        for (std::size_t i = 0; i < count; ++i) {
            box.minX = x[i] < x[i + 1] ? x[i] : x[i + 1];
            box.maxX = x[i] < x[i + 1] ? x[i + 1] : x[i];
            box.minY = y[i] < y[i + 1] ? y[i] : y[i + 1];
            box.maxY = y[i] < y[i + 1] ? y[i + 1] : y[i];
            boxes[i / lanes].Set(i % lanes, box);
        }
        unsigned int isNear = 0;
        for (std::size_t i = 0; i < (std::min)(count, runSize); ++i) {
            box = boxes[i / lanes].Get(i % lanes);
            box.minX -= reach;
            box.minY -= reach;
            box.maxX += reach;
            box.maxY += reach;
            unsigned int met = 0;
            for (std::size_t four = 0; four < boxes.size(); ++four) met |= boxes[four].Meeting(box) << four * lanes;
            isNear |= met >> (i + 2);
        }
        return isNear == 0;
    }

    std::vector<char> isQuiet;
};

}  // namespace Kalvio::Math::detail
