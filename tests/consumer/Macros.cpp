// windows.h defines these; standard headers that come after it are the compiler's affair.
#include <algorithm>
#include <complex>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <unordered_map>
#include <variant>

#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))

#include <kalvio/Math.h>
