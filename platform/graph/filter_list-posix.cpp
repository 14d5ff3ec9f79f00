#include "platform/graph/filter_list-posix.h"

#include <algorithm>

namespace platform {

namespace {

constexpr std::size_t maxNameLength = MAX_FILTER_NAME - 1;
constexpr std::size_t minDigits = 4;

std::u16string fourDigits(unsigned number) {
    const std::string digits = std::to_string(number);
    std::u16string text(digits.size() < minDigits ? minDigits - digits.size() : 0, u'0');
    return text.append(digits.begin(), digits.end());
}

/// An object's address as the component model compares it. The caller holds a reference on the object.
IUnknown* identityOf(IBaseFilter* filter) {
    return queryFor<IUnknown>(filter, IID_IUnknown);
}

}  // namespace

std::u16string FilterList::add(IBaseFilter* filter, LPCWSTR wanted) {
    Entry entry{filter, identityOf(filter), {}};
    std::u16string name = wanted != nullptr ? wanted : u"";
    const std::lock_guard lock(mutex_);
    name = freeName(std::move(name));
    entry.name = name;
    entries_.insert(entries_.begin(), std::move(entry));
    ++version_;
    return name;
}

bool FilterList::remove(IBaseFilter* filter) {
    CComPtr<IBaseFilter> removed;  // released after the lock
    const IUnknown* identity = identityOf(filter);
    const std::lock_guard lock(mutex_);
    const auto entry = std::ranges::find(entries_, identity, &Entry::identity);
    if (entry == entries_.end()) return false;
    removed = std::move(entry->filter);
    entries_.erase(entry);
    ++version_;
    return true;
}

bool FilterList::contains(IBaseFilter* filter) const {
    const IUnknown* identity = identityOf(filter);
    const std::lock_guard lock(mutex_);
    return std::ranges::find(entries_, identity, &Entry::identity) != entries_.end();
}

CComPtr<IBaseFilter> FilterList::find(LPCWSTR name) const {
    const std::u16string wanted = name;
    const std::lock_guard lock(mutex_);
    const auto entry = std::ranges::find(entries_, wanted, &Entry::name);
    return entry != entries_.end() ? entry->filter : CComPtr<IBaseFilter>();
}

CComPtr<IBaseFilter> FilterList::newest() const {
    const std::lock_guard lock(mutex_);
    return entries_.empty() ? CComPtr<IBaseFilter>() : entries_.front().filter;
}

FilterList::Snapshot FilterList::snapshot() const {
    const std::lock_guard lock(mutex_);
    Snapshot copy{{}, version_};
    copy.filters.reserve(entries_.size());
    for (const Entry& entry : entries_) copy.filters.push_back(entry.filter);
    return copy;
}

std::uint64_t FilterList::version() const {
    const std::lock_guard lock(mutex_);
    return version_;
}

bool FilterList::isNamed(const std::u16string& name) const {
    return std::ranges::find(entries_, name, &Entry::name) != entries_.end();
}

std::u16string FilterList::freeName(std::u16string wanted) const {
    if (!wanted.empty() && wanted.size() <= maxNameLength && !isNamed(wanted)) return wanted;
    for (unsigned number = 1;; ++number) {
        std::u16string suffix(wanted.empty() ? u"" : u" ");
        suffix += fourDigits(number);
        std::u16string name = wanted.substr(0, maxNameLength - suffix.size()) + suffix;
        if (!isNamed(name)) return name;
    }
}

}  // namespace platform
