#include "compiled/QueltCompiledBinaryParser.h"
#include "compiled/QueltDnf.h"
#include "compiled/QueltFltDomainEffectivity.h"
#include "compiled/QueltFltEffectivity.h"
#include "compiled/QueltFltEffectivityView.h"
#include "effectivity/QueltEeDateEff.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInSerialInterval.h"

namespace {

/// The constants of classes that the library gives out. Code that takes the address of one, if only to pass
/// it by reference, looks for it in the DLL, which has a constant only when something in it takes the
/// address, too.
[[gnu::used]] const void* const s_givenOut[] = {
    &QueltCompiledBinaryParser::s_maxBytes,
    &QueltDnf::s_maxConjunctions,
    &QueltDnf::s_maxLiterals,
    &QueltDnf::s_maxValues,
    &QueltEeDate::s_openAbove,
    &QueltEeDate::s_openBelow,
    &QueltEeNode::s_maxVisitDepth,
    &QueltFltDomainEffectivity::s_maxViews,
    &QueltFltEffectivity::s_maxDomains,
    &QueltFltEffectivityView::s_maxContexts,
    &QueltInSerialInterval::s_openLower,
    &QueltInSerialInterval::s_openUpper,
};

} // namespace
