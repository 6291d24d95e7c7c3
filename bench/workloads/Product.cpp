#include "workloads/Product.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltQmSpecList.h"

#include <algorithm>
#include <string>

namespace quelt::bench {

namespace {

constexpr unsigned s_options = 20;
constexpr unsigned s_values = 12;
constexpr unsigned s_elements = 4096; // of the branches

QueltEeNode* makeLeaf(QueltEeVarEff* criterion) {
    return new QueltEeVarEffLeaf(criterion);
}

template <class Group>
QueltEeGroupOp* makeGroup() {
    return new Group;
}

std::unique_ptr<Tree> treeOver(QueltEeNode& root) {
    return std::make_unique<Tree>(root.getNodeRef());
}

std::unique_ptr<Tree> makeAndOfOptions(const Product& product, Random& random, int count) {
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (int i = 0; i < count; ++i) {
        root->addChild(*makeLeaf(product.makeOption(random)));
    }
    return treeOver(*root);
}

} // namespace

QueltInGuid makeGuid(std::uint32_t number) {
    QueltInGuid::Bytes bytes{0x51, 0xE1};
    for (std::size_t place = bytes.size(); number != 0; number >>= 8U) {
        bytes[--place] = static_cast<std::uint8_t>(number);
    }
    return QueltInGuid(bytes);
}

Product::Product(unsigned dictionaries) {
    using Type = QueltEeSerialVar::SerialExternalType;
    for (unsigned number = 0; number < dictionaries; ++number) {
        QueltEeModelDico* dictionary =
            new QueltEeModelDico("Dictionary" + std::to_string(number), makeGuid(1000 + number));
        for (unsigned i = 0; i < s_options; ++i) {
            auto* const option = new QueltEeCatOptionVar("Option" + std::to_string(i), makeGuid(1 + i));
            for (unsigned value = 0; value < s_values; ++value) {
                option->addValue("value" + std::to_string(value));
            }
            if (number == 0) {
                m_options.push_back(option);
            }
            dictionary->addVariable(option);
        }
        if (number == 0) {
            m_pUnit = new QueltEeSerialVar("Unit", makeGuid(100), Type::productSeries);
            for (int year = 1990; year < 2030; ++year) {
                m_pUnit->addRevision(std::to_string(year), static_cast<unsigned>(year - 1989) * 10);
            }
            auto* const branches = new QueltEeTreeSeriesVar("Line", makeGuid(101), 18);
            branches->addRootElement(1);
            for (unsigned element = 2; element < s_elements; ++element) {
                branches->addElement(element, element / 2);
            }
            dictionary->addVariable(m_pUnit);
            dictionary->addVariable(branches);
        }
        m_context.AddModelDico(dictionary, 1);
    }
}

QueltEeVarEff* Product::makeOption(Random& random) const {
    auto* const criterion = new QueltEeOptionEff(m_options[random() % s_options]);
    for (unsigned left = 1 + random() % 3; left > 0; --left) {
        criterion->addValue(random() % s_values);
    }
    return criterion;
}

QueltEeVarEff* Product::makeSerial(Random& random) const {
    const int first = 2000 + static_cast<int>(random() % 1000);
    auto* const criterion = new QueltEeSerialEff(m_pUnit);
    criterion->addInterval({first, first + 3, 1, 1});
    criterion->addInterval({first + 5, first + 7, 1, 1});
    criterion->addInterval({first + 10, 2000000000, 1, 1});
    return criterion;
}

QueltEeVarEff* Product::makeDate(Random& random) {
    constexpr std::int64_t day = 86400;
    const std::int64_t first = day * static_cast<std::int64_t>(random() % 20000);
    auto* const criterion = new QueltEeDateEff;
    criterion->addInterval({first, first + 1000 * day});
    return criterion;
}

std::unique_ptr<Tree> makeOptions(const Product& product, Random& random) {
    return makeAndOfOptions(product, random, 8);
}

std::unique_ptr<Tree> makeForty(const Product& product, Random& random) {
    std::vector<QueltEeNode*> children;
    for (int group = 0; group < 5; ++group) {
        QueltEeGroupOp* const choice = makeGroup<QueltEeOrOp>();
        for (int i = 0; i < 5; ++i) {
            choice->addChild(*makeLeaf(product.makeOption(random)));
        }
        children.push_back(choice);
    }
    auto* const negation = new QueltEeNotOp;
    negation->setChildRef(*makeLeaf(product.makeOption(random))->getNodeRef());
    children.push_back(negation);
    children.push_back(makeLeaf(product.makeOption(random)));
    for (int i = 0; i < 4; ++i) {
        children.push_back(makeLeaf(product.makeSerial(random)));
    }
    for (int i = 0; i < 2; ++i) {
        children.push_back(makeLeaf(Product::makeDate(random)));
    }
    std::shuffle(children.begin(), children.end(), random);
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (QueltEeNode* const child : children) {
        root->addChild(*child);
    }
    return treeOver(*root);
}

std::unique_ptr<Tree> makeWide(const Product& product, Random& random) {
    return makeAndOfOptions(product, random, 2000);
}

std::unique_ptr<Tree> makeChain(const Product& product, Random& random) {
    QueltEeNode* below = makeLeaf(product.makeOption(random));
    for (int depth = 0; depth < 500; ++depth) {
        QueltEeGroupOp* const group = depth % 2 == 0 ? makeGroup<QueltEeOrOp>() : makeGroup<QueltEeAndOp>();
        group->addChild(*makeLeaf(product.makeOption(random)));
        group->addChild(*below);
        below = group;
    }
    return treeOver(*below);
}

std::unique_ptr<Tree> makeList(const Product& product, Random& random) {
    std::vector<QueltEeVarEff*> criteria;
    for (int i = 0; i < 10; ++i) {
        criteria.push_back(product.makeOption(random));
    }
    criteria.push_back(product.makeSerial(random));
    criteria.push_back(Product::makeDate(random));
    std::shuffle(criteria.begin(), criteria.end(), random);
    auto list = std::make_unique<QueltQmSpecList>();
    for (QueltEeVarEff* criterion : criteria) {
        list->addVarEff(criterion);
    }
    return std::make_unique<Tree>(list.release(), Tree::ListMode::all);
}

} // namespace quelt::bench
