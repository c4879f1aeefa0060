#pragma once

#include "modules/ConsumerBase.h"

#include <string>
#include <utility>

/// A consumer for tests that asks for nothing and ignores what comes.
class IdleConsumer : public ConsumerBase {
public:
    explicit IdleConsumer(std::wstring a_name, EGenericModule a_kind = EGenericModuleNone)
        : ConsumerBase(a_kind, std::move(a_name), {})
    {}

    void OnStopWork() override {}
    HICON GetTitleBarIconHandle() override { return nullptr; }
    void ProcessOperations(unsigned int, const HistoryOperations&) override {}
    void ProcessHistory(unsigned int, History&&) override {}
    void ProcessHistoryEnd(unsigned int) override {}
    void ProcessSynchronization(unsigned int, Synchronization&&) override {}
    void ProcessRecord(unsigned int, const Record&) override {}
    void ProcessCurrentState(unsigned int, const CurrentState&) override {}
    void ProcessOffers(unsigned int, const Offers&) override {}
    void ProcessLatestRecords(unsigned int, const LatestRecords&) override {}
    void RequestRefused(unsigned int, std::wstring_view) override {}
    void RequestEnded(unsigned int) override {}
};
