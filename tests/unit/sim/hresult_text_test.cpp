#include "sim/hresult_text.h"

#include <gtest/gtest.h>

TEST(HresultText, IsUpperCaseHexadecimalWithoutPadding) {
    EXPECT_EQ(hresultText(simConnectRemoteDisconnect), "0xC000013C");
    EXPECT_EQ(hresultText(0x1f), "0x1F");
    EXPECT_EQ(hresultText(0), "0x0");
}

TEST(HresultText, OnlyNegativeResultsAreFailuresAndSetTheError) {
    std::string error = "before";
    for (const SimConnectResult success : {0, 1, 0x7FFFFFFF}) {
        EXPECT_FALSE(simConnectFailed(success));
        EXPECT_TRUE(callSucceeded("SimConnect_Open", success, error));
    }
    EXPECT_EQ(error, "before");
    EXPECT_TRUE(simConnectFailed(-1));
    EXPECT_FALSE(callSucceeded("SimConnect_Open", -1, error));
    EXPECT_EQ(error, "SimConnect_Open failed (0xFFFFFFFF)");
}
