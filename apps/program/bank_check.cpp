#include "program/bank_check.h"

#include <atomic>
#include <limits>
#include <thread>

namespace norava {

namespace {

void MeasureAll(std::vector<CheckedProgram>& programs, int threads) {
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < programs.size(); i = next++)
            programs[i].figures = MeasureProgram(programs[i].entry.program);
    };
    std::vector<std::jthread> helpers;
    for (int i = 1; i < threads; ++i)
        helpers.emplace_back(work);
    work();
}

void FindNearest(std::vector<CheckedProgram>& programs) {
    for (CheckedProgram& one : programs) {
        one.nearestDistance = std::numeric_limits<double>::infinity();
        for (const CheckedProgram& other : programs) {
            if (&one == &other) continue;
            const double distance = Distance(one.figures.print, other.figures.print);
            if (distance >= one.nearestDistance) continue;
            one.nearestDistance = distance;
            one.nearestName = other.entry.program.name;
        }
    }
}

}  // namespace

std::vector<CheckedProgram> CheckBank(std::vector<BankEntry> bank, int threads) {
    std::vector<CheckedProgram> programs;
    programs.reserve(bank.size());
    for (BankEntry& entry : bank)
        programs.push_back({std::move(entry), {}, 0.0, {}, {}});
    MeasureAll(programs, threads);
    FindNearest(programs);
    for (CheckedProgram& one : programs) {
        one.faults = FindFaults(one.entry.program, one.figures);
        if (one.nearestDistance < kLeastDistance)
            one.faults.push_back("nearly the same as " + one.nearestName);
    }
    return programs;
}

}  // namespace norava
