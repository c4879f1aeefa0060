#include "modules/IConsumer.h"

IConsumer::~IConsumer() = default;

void IConsumer::SymbolDeleted(unsigned int /*a_requestId*/, const std::string& /*a_isin*/) {}

void IConsumer::UpdateAssets(ProviderBase* /*a_provider*/) {}
