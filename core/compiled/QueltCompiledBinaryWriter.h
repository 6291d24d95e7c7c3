#pragma once

#include "infrastructure/QueltCoreExport.h"

class QueltBioBuffer;
class QueltFltEffectivity;

/// Writes compiled effectivities as bytes, which QueltCompiledBinaryParser reads. The format is described in
/// docs/compiled-format.md.
class QUELT_CORE_API QueltCompiledBinaryWriter {
public:
    QueltCompiledBinaryWriter() = delete;

    /// Replaces what `buffer` holds by the bytes of `effectivity`. The same effectivity gives the same bytes
    /// on every platform: domains and views come by ascending number, the values of an option literal sorted
    /// and each once; contexts, conjunctions and literals in their order. Of an effectivity or option only
    /// the GUID is written, not the name and not the dictionary.
    ///
    /// E_POINTER when a context has no GUID or no normal form; E_INVALIDARG when a leaf is none that the
    /// format has: an effectivity leaf, or a leaf with an option effectivity that has a variable and leaves
    /// its no-variable flag unset, each negated or not; E_OUTOFMEMORY past the limits that the parser keeps.
    /// `buffer` is as it was then.
    [[nodiscard]] static long Write(const QueltFltEffectivity& effectivity, QueltBioBuffer& buffer);
};
