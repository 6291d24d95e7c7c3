#include "infrastructure/QueltInContainerTools.h"

#include <string_view>

namespace quelt {

namespace {

constexpr std::uint32_t s_deepest = 200;

thread_local constinit const ContainerText* t_pInnermost = nullptr;

} // namespace

ContainerText::ContainerText(const QueltInObject& container, char opening, char closing)
    : m_pContainer(&container), m_pOuter(t_pInnermost),
      m_depth(t_pInnermost != nullptr ? t_pInnermost->m_depth + 1U : 0U), m_closing(closing) {
    m_text << std::string_view(&opening, 1);
    t_pInnermost = this;
}

ContainerText::~ContainerText() {
    t_pInnermost = m_pOuter;
}

void ContainerText::element(const QueltInObject* object) {
    separate();
    write(object);
}

void ContainerText::entry(const QueltInObject* key, const QueltInObject* value) {
    separate();
    write(key);
    m_text << ": ";
    write(value);
}

QueltInString ContainerText::take() {
    m_text << std::string_view(&m_closing, 1);
    return m_text.take();
}

void ContainerText::separate() {
    if (!m_first) {
        m_text << ", ";
    }
    m_first = false;
}

void ContainerText::write(const QueltInObject* object) {
    if (object == nullptr) {
        m_text << "null";
    } else if (m_depth >= s_deepest || isBeingWritten(object)) {
        m_text << "...";
    } else {
        m_text << object->toString().view();
    }
}

bool ContainerText::isBeingWritten(const QueltInObject* object) const noexcept {
    for (const ContainerText* text = this; text != nullptr; text = text->m_pOuter) {
        if (text->m_pContainer == object) {
            return true;
        }
    }
    return false;
}

} // namespace quelt
