#include "companion/doctor/check_result.h"

#include <algorithm>
#include <utility>

const char* markName(Mark mark) {
    switch (mark) {
    case Mark::Warning:
        return "warning";
    case Mark::Fault:
        return "fault";
    case Mark::Good:
        break;
    }
    return "good";
}

CheckTopic::CheckTopic(CheckResults& results, std::string title) : results(results), title(std::move(title)) {}

void CheckTopic::good(std::string code, std::string found) {
    results.push_back({Mark::Good, std::move(code), title, std::move(found)});
}

void CheckTopic::warning(std::string code, std::string found, std::string remedy, Repair repair) {
    results.push_back({Mark::Warning, std::move(code), title, std::move(found), std::move(remedy), std::move(repair)});
}

void CheckTopic::fault(std::string code, std::string found, std::string remedy, Repair repair) {
    results.push_back({Mark::Fault, std::move(code), title, std::move(found), std::move(remedy), std::move(repair)});
}

bool isAllGood(const CheckResults& results) {
    return std::ranges::all_of(results, [](const CheckResult& result) { return result.mark == Mark::Good; });
}
