#include "sim/hresult_text.h"

#include <gtest/gtest.h>

TEST(HresultText, IsUpperCaseHexadecimalWithoutPadding) {
    EXPECT_EQ(hresultText(simConnectFail), "0x80004005");
    EXPECT_EQ(hresultText(simConnectRemoteDisconnect), "0xC000013C");
    EXPECT_EQ(hresultText(0), "0x0");
    EXPECT_EQ(hresultText(0x1f), "0x1F");
    EXPECT_EQ(hresultText(-1), "0xFFFFFFFF");
}

TEST(HresultText, OnlyNegativeResultsAreFailures) {
    EXPECT_FALSE(simConnectFailed(0));
    EXPECT_FALSE(simConnectFailed(1));
    EXPECT_FALSE(simConnectFailed(0x7FFFFFFF));
    EXPECT_TRUE(simConnectFailed(-1));
    EXPECT_TRUE(simConnectFailed(simConnectFail));
}

TEST(HresultText, FailureNamesTheCallAndTheResult) {
    EXPECT_EQ(simConnectError("SimConnect_Open", simConnectFail), "SimConnect_Open failed (0x80004005)");
}

TEST(HresultText, ErrorIsOnlySetByAFailedCall) {
    std::string error = "before";
    EXPECT_TRUE(callSucceeded("SimConnect_Open", 0, error));
    EXPECT_EQ(error, "before");
    EXPECT_FALSE(callSucceeded("SimConnect_Open", -1, error));
    EXPECT_EQ(error, "SimConnect_Open failed (0xFFFFFFFF)");
}
