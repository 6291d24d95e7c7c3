#pragma once

#include "core/support/RandomExpressions.h"

/// SampleWorld with what only conversions look at: revision tables, series that one dictionary holds or none
/// does, basic effectivities that dictionaries inherit, and effectivities that refer to each other in a
/// circle.
class ConversionWorld : public SampleWorld {
public:
    ConversionWorld();

    /// On whose behalf trees are converted; null is one of them.
    std::vector<QueltEeBasicEff*> behalves{nullptr};

private:
    QueltEeSerialVar* addSeries(QueltEeModelDico* dictionary, const char* name, std::uint8_t number);
    QueltEeTreeSeriesVar* addTree(QueltEeModelDico* dictionary, const char* name, std::uint8_t number);
    QueltEeBasicEff* addBasic(const char* name, std::uint8_t number,
                              const std::vector<QueltEeModelDico*>& inheritedIn);
};
