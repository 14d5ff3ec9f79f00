#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

namespace mvrtpfec {

/// An option that takes one of a few words.
template <class Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Value& value,
                       std::initializer_list<std::pair<const std::string, Value>> choices,
                       const std::string& help) {
    const auto take = [name, &value, words = std::map<std::string, Value>(choices)](const std::string& word) {
        const auto found = words.find(word);
        if (found == words.end()) throw CLI::ValidationError(name, "there is no choice '" + word + "'");
        value = found->second;
    };
    return command.add_option_function<std::string>(name, take, help);
}

}  // namespace mvrtpfec
