#include "companion/demo/web_files.h"
#include "simulation/simulator/simulator_controls.h"

#include <gtest/gtest.h>

#include <set>

/// The page shows a label only where it has an element for the word, and the program sends only the labels that exist.
TEST(PageControls, PageOffersEachControlThatHasALabel) {
    constexpr std::string_view mark = "data-sim=\"";
    const std::string_view page = demoWebFiles().at("index.html");
    std::multiset<std::string_view> offered;
    for (std::size_t place = page.find(mark); place != std::string_view::npos; place = page.find(mark, place)) {
        place += mark.size();
        offered.insert(page.substr(place, page.find('"', place) - place));
    }
    std::multiset<std::string_view> labelled;
    for (const SimulatorControl& control : simulatorControls()) {
        if (!control.label.empty()) {
            labelled.insert(control.word);
        }
    }
    EXPECT_EQ(offered, labelled);
}
