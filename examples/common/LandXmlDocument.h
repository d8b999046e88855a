#pragma once

#include "common/InputError.h"

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// A parsed LandXML file, with what its readers share: numbers, and messages that name the file and the line.
class LandXmlDocument {
public:
    /// @throws InputError for a file that is missing, not XML, or of another root than LandXML
    explicit LandXmlDocument(const std::string& path);

    pugi::xml_node GetRoot() const { return root; }
    /// Name of the length unit as the file states it; empty when it does not.
    std::string GetLinearUnit() const;
    int LineOf(pugi::xml_node node) const { return LineAt(node.offset_debug()); }

    /// The message with the file and the line in front.
    std::string At(pugi::xml_node node, const std::string& message) const;
    [[noreturn]] void Fail(pugi::xml_node node, const std::string& message) const;
    /// A finite number; `node` is where a failure is reported.
    double Parse(pugi::xml_node node, const char* number) const;
    /// The attribute, which must be there, as a number.
    double Number(pugi::xml_node node, const char* attribute) const;
    /// The first `count` numbers of the node's text; more may follow.
    std::vector<double> Numbers(pugi::xml_node node, std::size_t count) const;

private:
    int LineAt(std::ptrdiff_t offset) const;

    std::string fileName;
    std::string text;
    pugi::xml_document document;
    pugi::xml_node root;
};

}  // namespace Kalvio::Examples
