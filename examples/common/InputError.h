#pragma once

#include <stdexcept>

namespace Kalvio::Examples {

/// Input that cannot be used, or a result that cannot be written; the message names the file and, where it can, the
/// line.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace Kalvio::Examples
