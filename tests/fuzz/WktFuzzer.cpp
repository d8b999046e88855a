#include "fuzz/Bytes.h"
#include "text/Texts.h"

using namespace Kalvio::Math;

namespace {

// Of tame bytes one that is written so, with some words of others instead of its own; others are the text themselves.
std::string TakeText(Bytes& bytes) {
    std::string text;
    while (!bytes.Empty() && !bytes.Tame()) text += bytes.Take<char>();
    if (!bytes.Tame()) return text;
    text = texts[bytes.TakeCount(std::size(texts))];
    for (unsigned int changes = bytes.TakeCount(4); changes > 0; --changes) {
        const std::string& other = texts[bytes.TakeCount(std::size(texts))];
        const std::size_t at = bytes.TakeCount(255) % (text.size() + 1), from = bytes.TakeCount(255) % other.size();
        const std::size_t gone = bytes.TakeCount(8);  // a statement of its own: arguments come in any order
        text.replace(at, gone, other, from, bytes.TakeCount(12));
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
    See(written);
    std::vector<std::unique_ptr<IGeometry>> back;
    const bool isRead = Wkt::Read(written, back, error);
    Require(isRead || hasArcs);
    if (!hasArcs) Require(back.size() == geometries.size() && Wkt::Write(back, again) && again == written);
}
