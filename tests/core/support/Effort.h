#pragma once

/// How often something is tried, or how large it is, when that is `full` without sanitizers. These make all
/// of it ten times as slow, and find with less what they are there for.
template <class Number>
constexpr Number effort(Number full) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return full / 10;
#else
    return full;
#endif
}
