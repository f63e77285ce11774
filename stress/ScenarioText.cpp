// "scenario_text COUNT FILE...": parses each file COUNT times with random errors in it. Whatever the text,
// the parser must tell faults that lie in it, and end.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

#include "ScenarioRunner/ScenarioParser.h"
#include "stress/Mutation.h"

namespace {

bool LiesIn(const ScenarioRunner::Fault& fault, const std::string& text) {
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    return fault.line >= 1 && fault.line <= lines && fault.column >= 1 && fault.column <= text.size() + 1 &&
           !fault.text.empty();
}

bool ParsesAnything(const std::string& good, int count, std::mt19937& random) {
    std::size_t faulty = 0;
    for (int i = 0; i < count; ++i) {
        const std::string text = Fuzz::Mutate(good, random);
        std::vector<ScenarioRunner::Fault> faults;
        const auto scenario = ScenarioRunner::ParseScenario("", text, faults);
        const auto unknown = ScenarioRunner::CheckCommands(scenario.steps, Json::arrayValue);
        faulty += faults.empty() ? 0U : 1U;
        faults.insert(faults.end(), unknown.begin(), unknown.end());
        for (const auto& fault : faults) {
            if (!LiesIn(fault, text)) {
                std::cerr << fault.line << ':' << fault.column << ": " << fault.text << " in\n"
                          << text << '\n';
                return false;
            }
        }
    }
    std::cout << faulty << " of " << count << " had faults\n";
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: scenario_text COUNT FILE...\n";
        return 2;
    }
    std::mt19937 random(std::random_device{}());
    for (int i = 2; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        if (text.empty() || !ParsesAnything(text, std::atoi(argv[1]), random)) {
            return 1;
        }
    }
    return 0;
}
