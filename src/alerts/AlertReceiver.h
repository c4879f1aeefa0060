#pragma once

#include "platform/Export.h"

class AlertEvent;
class AlertEventCloudInfo;
class AlertEventGenerate;

/// Receives alert event records, one operation for each kind of record. Implementations and callers live in the alert
/// modules; the library calls none of this.
///
/// The sender calls on one thread at a time, in the order in which the events happened, and makes no more calls after
/// the receiver was taken off its list. A record is lent for the call: copy what is kept. The receiver outlives its
/// place on the sender's list. Nothing may be thrown: a sender has other receivers to serve.
class KALVENTO_API AlertReceiver {
public:
    virtual ~AlertReceiver();

    /// Something happened to an alert; the two values say what.
    virtual void OnAlertEvent(const AlertEvent& a_event) = 0;
    /// News of the alerts that are kept in the cloud. It may come before any event, and again whenever they change.
    virtual void OnCloudInfo(const AlertEventCloudInfo& a_info) = 0;
    /// An alert has come true and is to be shown.
    virtual void OnAlertGenerated(const AlertEventGenerate& a_alert) = 0;
};
