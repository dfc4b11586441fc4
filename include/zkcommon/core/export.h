// Export macro of the shared library: exported classes carry ZKCOMMON_API, the rest stays hidden.
#ifndef ZKCOMMON_CORE_EXPORT_H
#define ZKCOMMON_CORE_EXPORT_H

#if defined(_WIN32)
#if defined(ZKCOMMON_BUILDING)
#define ZKCOMMON_API __declspec(dllexport)
#else
#define ZKCOMMON_API __declspec(dllimport)
#endif
#else
#define ZKCOMMON_API __attribute__((visibility("default")))
#endif

#endif // ZKCOMMON_CORE_EXPORT_H
