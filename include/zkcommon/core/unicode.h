// The few ICU names the library uses, brought into ZkCommonNS.
#ifndef ZKCOMMON_CORE_UNICODE_H
#define ZKCOMMON_CORE_UNICODE_H

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

namespace ZkCommonNS {
using icu::Locale;
using icu::UnicodeString;
} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_UNICODE_H
