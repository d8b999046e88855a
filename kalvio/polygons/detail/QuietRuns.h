#pragma once

#include "kalvio/core/Point2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Kalvio::Math::detail {

/// Tells for runs of `runSize` segments of a chain, from its start on, that each of their segments surely stays further
/// than `tolerance`, in x or in y, from the segments of the same and of the next run, but for the one that follows it.
/// Found in single precision about a point of the chain, some runs at a time: where a chain does not come back to
/// itself at once, that is most runs, in a fraction of the time that pairs take.
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
    static constexpr std::size_t lanes = 4;
    static constexpr std::size_t blockSize = 16 * runSize;
    static constexpr std::size_t ahead = 2 * runSize;  // from the start of a run to the end of the next
    static constexpr std::size_t reachSize = blockSize + ahead;

    using Numbers = std::array<float, reachSize + lanes>;

    void FindInBlock(const Point2D* points, std::size_t count, double tolerance, std::size_t firstRun) {
        Numbers x, y, minX, minY, maxX, maxY;
        std::array<std::int32_t, blockSize> meets;
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
        if (!(reach < 1e30F)) return;
        for (std::size_t i = 0; i < count; ++i) {
            minX[i] = x[i] < x[i + 1] ? x[i] : x[i + 1];
            maxX[i] = x[i] < x[i + 1] ? x[i + 1] : x[i];
            minY[i] = y[i] < y[i + 1] ? y[i] : y[i + 1];
            maxY[i] = y[i] < y[i + 1] ? y[i + 1] : y[i];
        }
        for (std::size_t i = count; i < (std::min)(count + ahead, reachSize); ++i) {
            minX[i] = minY[i] = 1e38F;  // nothing is there
            maxX[i] = maxY[i] = -1e38F;
        }
        const std::size_t inBlock = (std::min)(count, blockSize);
        for (std::size_t i = 0; i < inBlock; ++i) {
            const float lowX = minX[i] - reach, highX = maxX[i] + reach;
            const float lowY = minY[i] - reach, highY = maxY[i] + reach;
            int isNear = 0;
            for (std::size_t step = 2; step < ahead; ++step) {  // without branches
                isNear |= int{lowX <= maxX[i + step]} & int{minX[i + step] <= highX} & int{lowY <= maxY[i + step]} &
                          int{minY[i + step] <= highY};
            }
            meets[i] = isNear;
        }
        for (std::size_t from = 0; from < inBlock; from += runSize) {
            std::int32_t any = 0;
            for (std::size_t i = from; i < (std::min)(inBlock, from + runSize); ++i) any |= meets[i];
            isQuiet[firstRun + from / runSize] = any == 0 ? 1 : 0;
        }
    }

    std::vector<char> isQuiet;
};

}  // namespace Kalvio::Math::detail
