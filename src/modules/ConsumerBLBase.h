#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class Asset;
class RequestParams;
class Settings;

/// A piece of logic without a window that subscribes in its own right: an indicator, a scanner, a rule of an alert. How
/// it receives the data is its own business. Its owner makes all calls, on one thread at a time.
///
/// Order: SetAsset and SetRequestParams (or UnserialiseState) while nothing flows, then StartSubscription,
/// StopSubscription, and from the start again. A deriving class stops in its destructor.
class KALVENTO_API ConsumerBLBase {
public:
    explicit ConsumerBLBase(std::wstring a_name);
    /// A copy has the name, the path and the number of the original. It doesn't take part in the original's
    /// subscription: a number of its own is set before it starts.
    ConsumerBLBase(const ConsumerBLBase&) = default;
    ConsumerBLBase& operator=(const ConsumerBLBase&) = default;
    virtual ~ConsumerBLBase();

    /// A copy of the whole object, stopped.
    virtual std::unique_ptr<ConsumerBLBase> Clone() const = 0;
    /// False, with nothing changed, while data flows, and for an asset that the logic can't use.
    virtual bool SetAsset(const Asset& a_asset) = 0;
    /// Empty until one is set.
    virtual std::optional<Asset> GetAsset() const = 0;
    /// False, with nothing changed, while data flows, and for a request that the logic can't use.
    virtual bool SetRequestParams(const RequestParams& a_requestParams) = 0;
    virtual RequestParams GetRequestParams() const = 0;
    /// Subscribes under RequestID at the provider of the asset. False where something is missing or the provider
    /// refuses; true also where data already flows.
    virtual bool StartSubscription() = 0;
    /// When this returns, nothing comes any more. Does nothing where no data flows.
    virtual void StopSubscription() = 0;
    /// True between a StartSubscription and its end, whichever side ends it.
    virtual bool IsSubscribed() const = 0;
    /// Writes what is needed to come back: asset, request and the logic's own.
    virtual void SerialiseState(Settings& a_settings) const = 0;
    /// Takes over what SerialiseState wrote, stopped. False, with nothing changed, where that can't be read.
    virtual bool UnserialiseState(const Settings& a_settings) = 0;

    const std::wstring& Name() const { return m_name; }
    void Name(std::wstring_view a_name) { m_name = a_name; }
    /// File in which the owner keeps the state; empty until it has one.
    const std::wstring& SavePath() const { return m_savePath; }
    void SavePath(std::wstring_view a_savePath) { m_savePath = a_savePath; }
    /// 0 until it has one.
    unsigned int RequestID() const { return m_requestID; }
    void RequestID(unsigned int a_requestID) { m_requestID = a_requestID; }

private:
    std::wstring m_name;
    std::wstring m_savePath;
    std::uint32_t m_requestID = 0;
};
