#pragma once

#include <windows.h>

#include <atomic>

/// Ctrl+C goes to every process of the console. While this exists, this one lives through it.
class SurvivingControlC {
public:
    SurvivingControlC() { SetConsoleCtrlHandler(survive, TRUE); }
    ~SurvivingControlC() { SetConsoleCtrlHandler(survive, FALSE); }
    SurvivingControlC(const SurvivingControlC&) = delete;
    SurvivingControlC& operator=(const SurvivingControlC&) = delete;

    static bool press() { return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0; }

    static inline std::atomic<int> survived{0};

private:
    static BOOL WINAPI survive(DWORD) {
        ++survived;
        return TRUE;
    }
};
