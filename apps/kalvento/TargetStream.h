#pragma once

#include "kalvento/OutputTarget.h"
#include "kalvento/ToolContext.h"

#include <memory>
#include <ostream>

namespace kalvento::tool {

/// Lets what writes to a std::ostream write to an OutputTarget, which must outlive this. A failure of the target is
/// raised by Finish, since a stream keeps what its buffer throws to itself.
class TargetStream {
public:
    explicit TargetStream(OutputTarget& a_target);
    ~TargetStream();
    TargetStream(const TargetStream&) = delete;
    TargetStream& operator=(const TargetStream&) = delete;

    std::ostream& Get() { return m_stream; }
    /// Hands everything to the target. Raises what writing raised.
    void Finish();

private:
    class Buffer;
    std::unique_ptr<Buffer> m_buffer;
    std::ostream m_stream;
};

} // namespace kalvento::tool
