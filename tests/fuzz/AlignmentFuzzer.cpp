#include "kalvio/alignments/Profile.h"
#include "kalvio/alignments/Stationing.h"

#include "fuzz/Bytes.h"

using namespace Kalvio::Math;

namespace {

void CheckProfile(Bytes& bytes) {
    std::vector<Profile::Vertex> vertices;
    for (unsigned int count = bytes.TakeCount(8); count > 0; --count) {
        Profile::Vertex vertex;
        vertex.station = bytes.TakeDouble();
        if (bytes.Tame() && !vertices.empty())
            vertex.station = vertices.back().station + 1.0 + std::abs(vertex.station);
        vertex.height = bytes.TakeDouble();
        vertex.curve = static_cast<Profile::Curve>(bytes.TakeCount(4));
        vertex.lengthIn = bytes.TakeDouble();
        vertex.lengthOut = bytes.TakeDouble();
        vertex.radius = bytes.TakeDouble();
        vertices.push_back(vertex);
    }
    Profile profile;
    const bool isBuilt = profile.Set(vertices);
    Require(isBuilt == profile.GetFaults().empty());
    const double station = bytes.TakeDouble();
    double height = 0.0;
    Profile::Place place;
    const bool found = profile.GetHeight(station, height);
    Require(profile.GetPlace(station, place) == found && !(found && profile.IsEmpty()));
    (void)profile.GetExtrema();
    (void)profile.GetSecondDerivative(station, true);
    std::vector<double> stations;
    profile.GetStationsOfHeight(height, stations);
    if (!bytes.Tame()) return;
    Require(profile.GetSlopeLength(profile.GetStart(), profile.GetEnd()) >=
            (profile.GetEnd() - profile.GetStart()) - 1e-6);
    Require(!found || !stations.empty());
    for (const double at : stations) {
        Require(profile.GetPlace(at, place));
        Require(std::abs(place.height - height) <= 1e-9 * (1.0 + std::abs(place.grade)) * 1e4);
    }
}

void CheckStationing(Bytes& bytes) {
    Stationing stationing(bytes.TakeDouble());
    for (unsigned int count = bytes.TakeCount(5); count > 0; --count) {
        const double back = bytes.TakeDouble();
        (void)stationing.AppendEquation(back, bytes.TakeDouble());
    }
    const double length = bytes.TakeDouble();
    const std::string text = stationing.GetText(length, 4);
    Stationing::Place place;
    const bool isRead = stationing.Parse(text, place);
    if (bytes.Tame()) Require(isRead && std::abs(place.length - length) <= 1e-6);
}

}  // namespace

void Kalvio::Math::Fuzz(Bytes& bytes) {
    CheckStationing(bytes);
    CheckProfile(bytes);
}
