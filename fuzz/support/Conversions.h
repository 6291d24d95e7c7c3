#pragma once

#include "commands/ConversionRun.h"
#include "commands/RecordConverter.h"

#include <string>
#include <string_view>

namespace quelt::host::fuzz {

/// How records are converted.
struct Way {
    ConvertOptions options = {};
    /// In an arena for each record, as quelt-migrate does, or on the plain heap, where a failed conversion
    /// may leave something behind.
    bool usesArena = true;
    unsigned jobs = 1;
};

/// The answers to `records`, one record a line. On the heap a conversion that fails may leave something
/// behind; the leak sanitizer is told to let that pass when `forgivesLeaks`.
[[nodiscard]] std::string answersTo(const LoadedContext& context, std::string_view records, const Way& way,
                                    bool forgivesLeaks = false);

/// Records that are not known to fail, and the answers to them.
struct Unfailed {
    std::string records;
    std::string answers;
};

/// What is left when those of `records` are replaced by empty lines that have failed, as `answers` say.
[[nodiscard]] Unfailed withoutFailed(std::string_view records, std::string_view answers);

} // namespace quelt::host::fuzz
