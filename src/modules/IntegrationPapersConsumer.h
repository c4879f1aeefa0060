#pragma once

#include "platform/Export.h"

#include <string>
#include <vector>

class Asset;

/// Is told which instruments a user has who is logged on at an external integration. Between ProcessLogon and
/// ProcessLogout the lists change by ProcessPapers, ProcessAddPaper and ProcessRemovePaper; a list is named by a narrow
/// key. Called on the main thread. A deriving class overrides what it needs.
class KALVENTO_API IntegrationPapersConsumer {
public:
    virtual ~IntegrationPapersConsumer();

    virtual void ProcessLogon();
    /// All lists are gone.
    virtual void ProcessLogout();
    /// The whole list of that key; it replaces the one before.
    virtual void ProcessPapers(const std::vector<Asset>& a_papers, const std::string& a_key);
    /// The list of that key grew by one.
    virtual void ProcessAddPaper(const Asset& a_paper, const std::string& a_key);
    /// The list of that key shrank by one.
    virtual void ProcessRemovePaper(const Asset& a_paper, const std::string& a_key);

protected:
    IntegrationPapersConsumer() = default;
};
