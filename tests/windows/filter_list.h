#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/module/filter_mapper.h"

namespace mvrtpfec {

/// A pin as the system's list of filters has it, which keeps no names of pins.
struct ListedPin {
    DWORD flags;  ///< REG_PINFLAG_...
    std::vector<std::pair<GUID, GUID>> mediaTypes;

    bool operator==(const ListedPin&) const = default;
};
using ListedPins = std::vector<ListedPin>;

struct ListedFilter {
    std::wstring name;
    DWORD merit;
    ListedPins pins;
};

/// How many filters the system lists with this merit or more.
std::size_t countListed(DWORD merit);
/// One of them.
std::optional<ListedFilter> findListed(REFCLSID classId, DWORD merit);

}  // namespace mvrtpfec
