#include "probe/probe.h"

#include "probe/rules.h"

namespace orvane::probe {

std::vector<std::string> ruleNames() {
    std::vector<std::string> names;
    for (const Rule& rule : rules()) names.emplace_back(rule.name);
    return names;
}

std::vector<Finding> ask(const Subject& subject) {
    std::vector<Finding> findings;
    Session session(subject);
    for (const Rule& rule : rules()) {
        const Seen seen = rule.ask(session);
        findings.push_back({rule.name, seen.answer, seen.what});
    }
    return findings;
}

std::string describe(const Finding& finding) {
    const char* const answers[] = {"as documented", "different", "could not be asked"};
    const std::string seen = finding.seen.empty() ? "" : ": " + finding.seen;
    return finding.rule + ": " + answers[static_cast<int>(finding.answer)] + seen;
}

}  // namespace orvane::probe
