#include "common/LandXmlDocument.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

namespace Kalvio::Examples {

namespace {

std::string WithoutPrefix(const char* name) {
    const char* const colon = std::strchr(name, ':');
    return colon == nullptr ? name : colon + 1;
}

}  // namespace

LandXmlDocument::LandXmlDocument(const std::string& path) : fileName(path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw InputError(path + ": cannot be opened");
    text.assign(std::istreambuf_iterator<char>(file), {});
    const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size());
    if (!result) {
        throw InputError(path + ", line " + std::to_string(LineAt(result.offset)) + ": " + result.description());
    }
    root = document.document_element();
    if (WithoutPrefix(root.name()) != "LandXML") {
        Fail(root, std::string("not a LandXML file (its root is <") + root.name() + ">)");
    }
}

std::string LandXmlDocument::GetLinearUnit() const {
    return root.child("Units").first_child().attribute("linearUnit").as_string();
}

std::string LandXmlDocument::At(pugi::xml_node node, const std::string& message) const {
    return fileName + ", line " + std::to_string(LineOf(node)) + ": " + message;
}

void LandXmlDocument::Fail(pugi::xml_node node, const std::string& message) const {
    throw InputError(At(node, message));
}

double LandXmlDocument::Parse(pugi::xml_node node, const char* number) const {
    char* end = nullptr;
    const double value = std::strtod(number, &end);
    while (end != nullptr && std::isspace(static_cast<unsigned char>(*end)) != 0) ++end;
    if (end == number || *end != '\0' || !std::isfinite(value)) {
        Fail(node, std::string("\"") + number + "\" is not a number");
    }
    return value;
}

double LandXmlDocument::Number(pugi::xml_node node, const char* attribute) const {
    const pugi::xml_attribute value = node.attribute(attribute);
    if (!value) Fail(node, std::string("<") + node.name() + "> without " + attribute);
    return Parse(node, value.as_string());
}

std::vector<double> LandXmlDocument::Numbers(pugi::xml_node node, std::size_t count) const {
    std::istringstream words(node.child_value());
    std::vector<double> numbers;
    for (std::string word; numbers.size() < count && words >> word;) numbers.push_back(Parse(node, word.c_str()));
    if (numbers.size() < count) {
        Fail(node, std::string("<") + node.name() + "> needs " + std::to_string(count) + " numbers");
    }
    return numbers;
}

int LandXmlDocument::LineAt(std::ptrdiff_t offset) const {
    const auto end = std::clamp<std::ptrdiff_t>(offset, 0, static_cast<std::ptrdiff_t>(text.size()));
    return 1 + static_cast<int>(std::count(text.begin(), text.begin() + end, '\n'));
}

}  // namespace Kalvio::Examples
