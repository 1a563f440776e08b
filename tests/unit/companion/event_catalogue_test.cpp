#include "companion/catalogue/event_catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

TEST(EventCatalogue, ListsEachEventOnceWithADescription) {
    std::set<std::string> names;
    for (const CatalogueEvent& event : EventCatalogue::instance().events()) {
        EXPECT_TRUE(names.insert(event.name).second) << event.name;
        EXPECT_TRUE(event.name.starts_with("K:") || event.name.starts_with("H:")) << event.name;
        EXPECT_FALSE(event.description.empty() || event.group.empty() || event.sure.empty()) << event.name;
        EXPECT_LE(event.values.size(), 3U) << event.name;
    }
    const auto keyEvents = std::ranges::count_if(names, [](const std::string& name) { return name[0] == 'K'; });
    EXPECT_GE(keyEvents, 500);
    EXPECT_GE(names.size(), 1000U);
}

TEST(EventCatalogue, FindsEventsInAnyCase) {
    const EventCatalogue& catalogue = EventCatalogue::instance();
    ASSERT_NE(catalogue.find("k:kohlsman_set"), nullptr);
    EXPECT_EQ(catalogue.find("K:KOHLSMAN_SET")->values.size(), 2U);
    EXPECT_NE(catalogue.find("H:AS1000_PFD_SOFTKEYS_12"), nullptr);
    EXPECT_EQ(catalogue.find("K:NO_SUCH_EVENT"), nullptr);
    EXPECT_EQ(catalogue.find("AP_MASTER"), nullptr);
}

TEST(EventCatalogue, NamesTheNearestEvent) {
    const EventCatalogue& catalogue = EventCatalogue::instance();
    EXPECT_EQ(catalogue.nearest("K:HEADING_BUG_ICN"), "K:HEADING_BUG_INC");
    EXPECT_EQ(catalogue.nearest("h:as1000_pfd_clr_longg"), "H:AS1000_PFD_CLR_Long");
    EXPECT_EQ(catalogue.nearest("K:SOMETHING_ELSE_ENTIRELY_HERE"), "");
}
