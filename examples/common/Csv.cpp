#include "common/Csv.h"

#include "common/InputError.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace Kalvio::Examples {

namespace {

// @return false for anything but numbers; those up to there are in `numbers`
bool TakeNumbers(const std::string& text, std::vector<double>& numbers) {
    const char* rest = text.c_str();
    for (;;) {
        char* end = nullptr;
        const double number = std::strtod(rest, &end);
        if (end == rest || !std::isfinite(number) || (*end != ',' && *end != '\0')) return false;
        numbers.push_back(number);
        if (*end == '\0') return true;
        rest = end + 1;
    }
}

}  // namespace

std::vector<double> ToNumbers(const std::string& text) {
    std::vector<double> numbers;
    return TakeNumbers(text, numbers) ? numbers : std::vector<double>();
}

std::vector<std::vector<double>> ReadCsv(const std::string& path, std::size_t columns,
                                         std::vector<std::size_t>* lines) {
    std::ifstream file(path);
    std::string line;
    std::vector<std::vector<double>> rows;
    for (std::size_t number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        std::vector<double> numbers;
        const bool isRead = TakeNumbers(line, numbers);
        if (!isRead && number == 1) continue;  // titles
        if (!isRead || numbers.size() != columns) {
            const std::size_t column = std::min(numbers.size(), columns) + 1;
            throw InputError(path + ":" + std::to_string(number) + ": not " + std::to_string(columns) +
                             " numbers, column " + std::to_string(column) + (isRead ? "" : " is none"));
        }
        rows.push_back(std::move(numbers));
        if (lines != nullptr) lines->push_back(number);
    }
    if (file.bad() || !file.eof()) throw InputError(path + ": cannot be read");
    return rows;
}

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + '"';
}

}  // namespace Kalvio::Examples
