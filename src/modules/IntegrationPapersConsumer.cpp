#include "modules/IntegrationPapersConsumer.h"

IntegrationPapersConsumer::~IntegrationPapersConsumer() = default;

void IntegrationPapersConsumer::ProcessLogon() {}

void IntegrationPapersConsumer::ProcessLogout() {}

void IntegrationPapersConsumer::ProcessPapers(const std::vector<Asset>& /*a_papers*/,
                                              const std::string& /*a_key*/)
{}

void IntegrationPapersConsumer::ProcessAddPaper(const Asset& /*a_paper*/, const std::string& /*a_key*/) {}

void IntegrationPapersConsumer::ProcessRemovePaper(const Asset& /*a_paper*/, const std::string& /*a_key*/) {}
