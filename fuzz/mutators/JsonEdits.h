#pragma once

#include "mutators/Json.h"
#include "mutators/NodeMaker.h"

namespace quelt::host::fuzz {

/// Changes a parsed document here and there.
class JsonEdits {
public:
    /// Takes new texts from `texts`, which must outlive the object.
    JsonEdits(Json& document, const Json& context, const std::vector<std::string_view>& texts, Dice& dice,
              JsonMemory& memory)
        : m_document(document), m_texts(texts), m_dice(dice), m_memory(memory),
          m_maker(context, dice, memory) {}

    /// Makes one change.
    void edit();
    /// Puts a copy of some value of `other` in the place of one of the document.
    void splice(Json& other);

private:
    void editNode(Json& value);
    void editAny(Json& value);
    void editArray(Json& array);
    void editObject(Json& object);
    void editText(Json& text);
    void editNumber(Json& number);
    void wrap(Json& value);
    void unwrap(Json& value);
    [[nodiscard]] Json anything();

    Json& m_document;
    const std::vector<std::string_view>& m_texts;
    Dice& m_dice;
    JsonMemory& m_memory;
    NodeMaker m_maker;
};

} // namespace quelt::host::fuzz
