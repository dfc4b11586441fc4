// The C-locale number conversions of the C runtime, behind a small interface so that the
// platform's way of pinning the locale stays in one file (clocale_posix.cpp).
#ifndef ZKCOMMON_SRC_TEXT_CLOCALE_H
#define ZKCOMMON_SRC_TEXT_CLOCALE_H

#include <cstddef>

namespace ZkCommonNS {
namespace detail {

/// Prepares the C locale once per process; thread-safe and cheap after the first call.
void prepareCLocale();
/// snprintf of one double with `format` (such as "%g") in the C locale, whatever the process
/// locale is. Returns the length written, or -1.
int formatDoubleC(char* buffer, std::size_t capacity, const char* format, double value);
/// strtod in the C locale.
double parseDoubleC(const char* text, char** end);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_TEXT_CLOCALE_H
