#pragma once

#include <string>
#include <utility>

/// An account at a broker.
struct BrokerAccountInfo {
    BrokerAccountInfo(std::string a_id, std::wstring a_name, bool a_isDefault)
        : id(std::move(a_id)), name(std::move(a_name)), isDefault(a_isDefault)
    {}

    std::string id;    ///< The broker's number of the account.
    std::wstring name; ///< For the user.
    bool isDefault;    ///< Orders go to this account unless the user chooses another one.
};
