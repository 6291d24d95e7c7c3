#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <cstddef>

class QueltBioBuffer;
class QueltInObject;

/// Reads what QueltCompiledBinaryWriter writes. It trusts nothing: whatever the bytes are, it answers, in
/// time and memory in proportion to their number (at most 64 bytes for each, and 64 KiB). The format is
/// described in docs/compiled-format.md.
class QUELT_CORE_API QueltCompiledBinaryParser {
public:
    QueltCompiledBinaryParser() = delete;

    /// The longest compiled binary, in bytes.
    static constexpr std::size_t s_maxBytes = std::size_t{16} * 1024 * 1024;

    /// Reads a new QueltFltEffectivity from `buffer`, which is empty afterwards, whatever the result. The
    /// caller owns `object`; it also owns what the leaves refer to: a QueltEePredefEff for each effectivity,
    /// named by its GUID's text, and a QueltEeCatOptionVar for each option, named likewise, with the values
    /// that the binary names for it anywhere.
    ///
    /// Only what the writer writes is read, so that writing what was read gives the same bytes. On failure
    /// `object` is null: E_INVALIDARG for bytes that are none of the format (not its magic, a length that is
    /// not theirs, a wrong checksum, a count or a length that points behind the end, a kind of literal that
    /// does not exist, domains, views or values out of order or given twice, a context given twice, bytes
    /// behind the end); E_NOTIMPL for a version of the format that is not known here; E_OUTOFMEMORY past a
    /// limit: s_maxBytes and those of the classes that are made.
    [[nodiscard]] static long Read(QueltBioBuffer& buffer, QueltInObject*& object);
};
