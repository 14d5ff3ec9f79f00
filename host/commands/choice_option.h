#pragma once

#include <algorithm>
#include <initializer_list>
#include <ranges>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/ranges.h>

namespace mvrtpfec {

/// What to throw for a word that is none of an option's `words`.
template <class Words>
CLI::ValidationError noSuchWord(const std::string& option, const std::string& word, const char* kind,
                                const Words& words) {
    return CLI::ValidationError(
        option, fmt::format("there is no {} '{}', only {}", kind, word, fmt::join(words, ", ")));
}

/// An option that takes one of a few words.
template <class Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Value& value,
                       std::initializer_list<std::pair<const std::string, Value>> choices,
                       const std::string& help) {
    using Choice = std::pair<const std::string, Value>;
    const auto take = [name, &value, all = std::vector<Choice>(choices)](const std::string& word) {
        const auto found = std::ranges::find(all, word, &Choice::first);
        if (found == all.end()) throw noSuchWord(name, word, "choice", std::views::keys(all));
        value = found->second;
    };
    return command.add_option_function<std::string>(name, take, help);
}

}  // namespace mvrtpfec
