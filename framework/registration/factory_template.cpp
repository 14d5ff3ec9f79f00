#include "framework/registration/factory_template.h"

namespace mvrtpfec {

namespace {

// Zero before any static object is constructed, so the order of construction doesn't matter.
constinit const FactoryTemplate* table = nullptr;
constinit int rows = 0;

}  // namespace

void SetFactoryTemplates(const FactoryTemplate* templates, int count) noexcept {
    table = templates;
    rows = count;
}

std::span<const FactoryTemplate> factoryTemplates() noexcept {
    return {table, static_cast<std::size_t>(rows)};
}

}  // namespace mvrtpfec
