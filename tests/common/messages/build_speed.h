#pragma once

namespace orvane::test {

// How many times slower this build is than the product: tests of cost take that much less work.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr int slowdown = 20;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
inline constexpr int slowdown = 20;
#else
inline constexpr int slowdown = 1;
#endif
#else
inline constexpr int slowdown = 1;
#endif

}  // namespace orvane::test
