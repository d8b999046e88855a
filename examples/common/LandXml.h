#pragma once

#include "common/InputError.h"

#include "kalvio/alignments/Alignment.h"
#include "kalvio/core/Point2D.h"
#include "kalvio/curves/Polyline2D.h"
#include "kalvio/curves/Spiral2D.h"

#include <optional>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// One element of CoordGeom as the file states it, beside the element that the library made of it.
struct StatedElement {
    std::string type;          // Line, Arc, Clothoid, Bloss ...
    double startRadius = 0.0;  // signed, positive to the left; 0 straight
    double endRadius = 0.0;
    Math::Point2D statedEnd;
    int line = 0;                               // of the file
    std::optional<Math::Point2D> statedCorner;  // of the tangents of a transition, where the file has it
};

/// What files call the law of an element type or of a cant.
std::string SpiralName(const std::string& type);
std::string SpiralName(Math::Spiral2D::Spiral2DType law);

/// A horizontal alignment with its design profile, cant and station equations. x is the easting and y the northing.
struct Alignment {
    std::string name;
    double statedLength = 0.0;  // 0 when the file states none
    Math::Polyline2D plan;
    std::vector<StatedElement> elements;  // one for each element of `plan`
    Math::Profile profile;                // stations from the start of the plan; empty when there is none
    Math::Cant cant;
    Math::Stationing stationing;

    /// Internal station of the start: stations of the file's scale are this much above lengths along the plan.
    double GetStartStation() const { return stationing.GetStart(); }
    /// Design height at a station of the file's scale, without cant. @return false when the profile does not define it
    bool GetHeight(double station, double& height) const {
        return profile.GetHeight(station - GetStartStation(), height);
    }
    Math::Alignment InSpace() const { return Math::Alignment(plan, profile, cant, stationing); }
};

struct LandXmlFile {
    std::string linearUnit;
    std::vector<Alignment> alignments;
    std::vector<std::string> warnings;  // what is left out and why, with the file and, where it can be, the line
};

/// Reads the alignments of a LandXML file: Line, Curve and Spiral of CoordGeom (the radii of a cubic parabola as
/// whichever statement of them leads nearest to the stated end); PVI, ParaCurve, UnsymParaCurve and
/// CircCurve of the design profile; StaEquation; the applied cant of Cant, in millimetres or inches over the gauge in
/// metres or feet. An alignment, profile, equation or cant that is at fault is left out with a warning.
/// @throws InputError for a file that is missing, broken or foreign, or has no alignment that can be read
LandXmlFile ReadLandXml(const std::string& path);

/// ReadLandXml with the warnings on stderr.
LandXmlFile LoadLandXml(const std::string& path);

/// "m" for metres or an unnamed unit, else the unit's own name.
std::string UnitText(const std::string& linearUnit);

}  // namespace Kalvio::Examples
