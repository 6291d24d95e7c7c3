#include "module/support/ConversionWorld.h"

#include "expression/QueltEeGenericExpression.h"

namespace {

void setTree(QueltEeEffectivity& effectivity, OwnedReference tree) {
    QueltEeExpression* expression = new QueltEeGenericExpression(tree.release());
    effectivity.setExpr(expression);
}

OwnedReference leafOn(QueltEeEffectivity& effectivity, const QueltEeModelDico* dictionary = nullptr) {
    return held(new QueltEeEffLeaf(&effectivity, dictionary));
}

} // namespace

QueltEeSerialVar* ConversionWorld::addSeries(QueltEeModelDico* dictionary, const char* name,
                                             std::uint8_t number) {
    auto series = std::make_unique<QueltEeSerialVar>(
        name, guidOf(number), QueltEeSerialVar::SerialExternalType::manufacturingSeries);
    serials.push_back(series.get());
    if (dictionary != nullptr) {
        EXPECT_EQ(dictionary->addVariable(series.release()), S_OK);
    } else {
        context.adopt(std::move(series));
    }
    return serials.back();
}

QueltEeTreeSeriesVar* ConversionWorld::addTree(QueltEeModelDico* dictionary, const char* name,
                                               std::uint8_t number) {
    auto tree = std::make_unique<QueltEeTreeSeriesVar>(name, guidOf(number), 19U);
    EXPECT_EQ(tree->addRootElement(1), S_OK);
    EXPECT_EQ(tree->addElement(2, 1), S_OK);
    trees.push_back(tree.get());
    if (dictionary != nullptr) {
        EXPECT_EQ(dictionary->addVariable(tree.release()), S_OK);
    } else {
        context.adopt(std::move(tree));
    }
    return trees.back();
}

QueltEeBasicEff* ConversionWorld::addBasic(const char* name, std::uint8_t number,
                                           const std::vector<QueltEeModelDico*>& inheritedIn) {
    auto effectivity = std::make_unique<QueltEeBasicEff>(name, guidOf(number));
    QueltEeBasicEff* const basic = effectivity.get();
    context.adopt(std::move(effectivity));
    for (QueltEeModelDico* const dictionary : inheritedIn) {
        EXPECT_EQ(context.addInheritedDictionary(*basic, *dictionary), S_OK);
    }
    effectivities.push_back(basic);
    behalves.push_back(basic);
    return basic;
}

ConversionWorld::ConversionWorld() {
    QueltEeModelDico* const truck = dictionaries[0];
    QueltEeModelDico* const van = dictionaries[1];
    QueltEeModelDico* const bus = dictionaries[2];
    for (QueltEeSerialVar* const series : serials) {
        if (series->getExternalType() == QueltEeSerialVar::SerialExternalType::productSeries) {
            series->addRevision("2012", 7);
            series->addRevision("prototype", 8);
            series->addRevision("2015", 11);
            series->addRevision("2012", 13); // a year that is there already
        }
    }
    QueltEeSerialVar* const plant = addSeries(van, "Plant", 8);
    plant->addRevision("8", 21);
    plant->addRevision("4", 17);
    addSeries(bus, "Lot", 9); // without revision table
    addSeries(nullptr, "Loose", 10)->makeRevisionTable();
    addTree(truck, "Branch", 11);
    addTree(nullptr, "Twig", 12);

    addBasic("EFF-2", 205, {});
    QueltEeBasicEff* const here = addBasic("EFF-3", 206, {truck, van});
    QueltEeBasicEff* const there = addBasic("EFF-4", 207, {bus});
    QueltEeBasicEff* const itself = addBasic("EFF-5", 208, {van});
    setTree(*here, anyOf(leafOn(*there, bus), leafOn(*itself)));
    setTree(*there, allOf(leafOn(*here, truck), always()));
    setTree(*itself, leafOn(*itself, van));
    setTree(*addBasic("EFF-6", 209, {bus, truck}), always());
    setTree(*addBasic("EFF-7", 210, {truck, van, bus}), never());
}
