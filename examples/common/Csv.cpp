#include "common/Csv.h"

#include "common/InputError.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <utility>

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
    std::vector<std::vector<double>> rows;
    for (std::size_t number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        std::vector<double> numbers = ToNumbers(line);
        if (numbers.size() == columns) {
            rows.push_back(std::move(numbers));
        } else if (number > 1 || !numbers.empty()) {
            throw InputError(path + ":" + std::to_string(number) + ": not " + std::to_string(columns) + " numbers");
        }
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
