#include "common/Csv.h"

#include "common/InputError.h"

#include <cmath>
#include <cstdlib>
#include <fstream>

namespace Kalvio::Examples {

std::vector<double> ToNumbers(const std::string& text) {
    std::vector<double> numbers;
    const char* rest = text.c_str();
    for (;;) {
        char* end = nullptr;
        const double number = std::strtod(rest, &end);
        if (end == rest || !std::isfinite(number) || (*end != ',' && *end != '\0')) return {};
        numbers.push_back(number);
        if (*end == '\0') return numbers;
        rest = end + 1;
    }
}

std::vector<std::vector<double>> ReadCsv(const std::string& path, std::size_t columns) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) throw InputError(path + ": cannot be read");
    std::vector<std::vector<double>> rows;
    for (std::size_t number = 2; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        rows.push_back(ToNumbers(line));
        if (rows.back().size() != columns) {
            throw InputError(path + ":" + std::to_string(number) + ": not " + std::to_string(columns) + " numbers");
        }
    }
    return rows;
}

}  // namespace Kalvio::Examples
