#include "modules/ConsumerBLBase.h"

#include <utility>

ConsumerBLBase::ConsumerBLBase(std::wstring a_name) : m_name(std::move(a_name)) {}

ConsumerBLBase::~ConsumerBLBase() = default;
