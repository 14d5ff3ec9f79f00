#include "bench/targets.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace mvrtpfec::bench {

namespace {

std::vector<Target>& targets() {
    static std::vector<Target> all;
    return all;
}

struct Outcome {
    const Target& target;
    double subject;
    double limit;

    double ratio() const { return subject / limit; }
    bool isHeld() const { return ratio() <= target.most; }
    const char* word() const { return isHeld() ? "held" : "short"; }
};

void writeJson(const std::vector<Outcome>& outcomes, const std::string& path) {
    std::ofstream file(path);
    file << "[\n";
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const Outcome& outcome = outcomes[i];
        file << "  {\"name\": \"" << outcome.target.name << "\", \"ns\": " << outcome.subject
             << ", \"limit_ns\": " << outcome.limit << ", \"ratio\": " << outcome.ratio()
             << ", \"target\": " << outcome.target.most << ", \"result\": \"" << outcome.word() << "\"}"
             << (i + 1 < outcomes.size() ? ",\n" : "\n");
    }
    file << "]\n";
    file.close();
    if (!file) throw std::runtime_error(path + ": could not be written");
}

}  // namespace

void addTarget(Target target) {
    targets().push_back(std::move(target));
}

bool reportTargets(const Measurements& measured, const std::string& jsonPath) {
    std::vector<Outcome> outcomes;
    for (const Target& target : targets()) {
        const auto subject = measured.find(target.subject);
        const auto limit = measured.find(target.limit);
        if (subject == measured.end()) continue;
        if (target.limit.empty())
            outcomes.push_back({target, subject->second, 1});
        else if (limit != measured.end())
            outcomes.push_back({target, subject->second, limit->second});
    }
    bool allHeld = true;
    std::printf("\n%-46s %9s %9s %7s %7s\n", "target", "ns", "limit ns", "ratio", "most");
    for (const Outcome& outcome : outcomes) {
        std::printf("%-46s %9.1f %9.1f %7.2f %7.2f  %s\n", outcome.target.name.c_str(), outcome.subject,
                    outcome.limit, outcome.ratio(), outcome.target.most, outcome.word());
        allHeld = allHeld && outcome.isHeld();
    }
    if (!jsonPath.empty()) writeJson(outcomes, jsonPath);
    return allHeld;
}

}  // namespace mvrtpfec::bench
