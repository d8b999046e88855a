#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Kalvio::Examples {

/// Reads a table of numbers: commas between, a first line of titles and empty lines passed over.
/// @param columns  numbers that every line must have
/// @param lines    where there is one, the number of the line of each row in the file is appended to it
/// @throws InputError for a file that is missing, and with line and column for a line with other than finite numbers or
///         of another width
std::vector<std::vector<double>> ReadCsv(const std::string& path, std::size_t columns,
                                         std::vector<std::size_t>* lines = nullptr);

/// Numbers with commas between; empty when the text holds anything else.
std::vector<double> ToNumbers(const std::string& text);

/// The text as a field of a table: in quotes where it holds a comma, a quote or a line break.
std::string CsvField(const std::string& text);

}  // namespace Kalvio::Examples
