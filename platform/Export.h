#pragma once

/// KIV_EXPORT marks what pathmere.dll exports. The library's own objects export it (also those that go into the
/// static library, where it does no harm); a program that links the static library defines KIV_STATIC.
#if defined(_WIN32) && defined(KIV_BUILDING)
#define KIV_EXPORT __declspec(dllexport)
#elif defined(_WIN32) && !defined(KIV_STATIC)
#define KIV_EXPORT __declspec(dllimport)
#else
#define KIV_EXPORT
#endif
