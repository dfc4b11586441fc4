// C-locale number conversions on POSIX: a C locale object made once, used per call through
// uselocale and strtod_l, so the process locale of the host application is never changed.
#include "text/clocale.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale.h>
#include <mutex>

namespace ZkCommonNS {
namespace detail {

namespace {

locale_t s_cLocale = nullptr;
std::once_flag s_cLocaleOnce;

locale_t cLocale() {
    std::call_once(s_cLocaleOnce, [] { s_cLocale = newlocale(LC_ALL_MASK, "C", nullptr); });
    return s_cLocale;
}

} // namespace

void prepareCLocale() {
    cLocale();
}

int formatDoubleC(char* buffer, std::size_t capacity, const char* format, double value) {
    locale_t c = cLocale();
    locale_t previous = c ? uselocale(c) : nullptr;
    int length = std::snprintf(buffer, capacity, format, value);
    if (previous)
        uselocale(previous);
    return length;
}

double parseDoubleC(const char* text, char** end) {
    locale_t c = cLocale();
    if (c)
        return strtod_l(text, end, c);
    return std::strtod(text, end);
}

} // namespace detail
} // namespace ZkCommonNS
