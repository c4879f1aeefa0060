#pragma once

#include "platform/Export.h"

#include <cstdint>

/// The application's display settings, as far as the library reads them. The host owns the object and keeps it for the
/// life of the mediator; a changed setting shows in the next answer. Main thread only.
class KALVENTO_API IGeneralSettings {
public:
    virtual ~IGeneralSettings();

    /// Gap that a module window keeps to its neighbours when it is placed, in pixels at 96 dots per inch; not negative.
    virtual int GetWindowMargin() const = 0;
    /// How long a changed cell of a grid stays in the colours of a change, in milliseconds.
    virtual std::uint32_t GetFlashTime() const = 0;
};
