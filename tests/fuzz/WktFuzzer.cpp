#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

namespace {

// Tame bytes choose among these; others are the text themselves.
const std::string words =
    "POINT|LINESTRING|CIRCULARSTRING|COMPOUNDCURVE|POLYGON|CURVEPOLYGON|MULTIPOINT|MULTICURVE|MULTISURFACE|"
    "GEOMETRYCOLLECTION|MULTIPOLYGON|MULTILINESTRING| Z | M|ZM| EMPTY|(|((|)|))|, | |\n|0 0|1 1|2 0|"
    "0 0 1, 1 0 1, 1 1 1, 0 0 1|0 0, 1 0, 1 1, 0 0|0 0, 1 1, 2 0|1e308|-1e-320|6672000.123456789|";

std::string TakeText(Bytes& bytes) {
    std::string text;
    while (!bytes.Empty()) {
        if (!bytes.Tame()) {
            text += bytes.Take<char>();
            continue;
        }
        std::size_t from = 0;
        for (unsigned int skipped = bytes.TakeCount(32); skipped > 0; --skipped) from = words.find('|', from) + 1;
        text += words.substr(from, words.find('|', from) - from);
    }
    return text;
}

}  // namespace

void Kalvio::Math::FuzzWkt(Bytes& bytes) {
    const std::string text = TakeText(bytes);
    std::vector<std::unique_ptr<IGeometry>> geometries;
    Wkt::Error error;
    if (!Wkt::Read(text, geometries, error)) {
        Require(geometries.empty() && error.offset <= text.size() && error.column <= error.offset + 1);
        Require(!error.reason.empty() && error.line > 0);
        return;
    }
    // Without arcs, what was read can be written and comes back the same; huge or tiny arcs may not.
    std::string written, again;
    if (!Wkt::Write(geometries, written)) return;
    const bool hasArcs = written.find("CIRCULAR") != std::string::npos;
    for (const std::unique_ptr<IGeometry>& geometry : geometries) Require(Wkt::Write(*geometry, again));
    std::vector<std::unique_ptr<IGeometry>> back;
    const bool isRead = Wkt::Read(written, back, error);
    Require(isRead || hasArcs);
    if (!hasArcs) Require(back.size() == geometries.size() && Wkt::Write(back, again) && again == written);
}
