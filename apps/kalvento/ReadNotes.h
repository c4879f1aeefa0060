#pragma once

#include "kalvento/AddReadOptions.h"
#include "kalvento/OutputTarget.h"
#include "text_rows/ReadHooks.h"
#include "text_rows/RowCounts.h"

#include <memory>
#include <string>
#include <string_view>

namespace kalvento::rows {
class ByteSource;
}

namespace kalvento::tool {

/// Passes on what readers report: notes to standard error, and lines that are set aside to a file.
class ReadNotes {
public:
    /// Raises ToolError where the file of rejected lines can't be written, as the hooks do.
    ReadNotes(ToolContext& a_context, const InputOptions& a_options);

    /// For a reader of that input. The context outlives them; so do these notes where there is a file.
    ReadHooks HooksFor(const ByteSource& a_input) const;
    /// A note on a file, unless it is empty.
    void Say(const std::string& a_file, std::string_view a_note) const;
    /// Puts the file, if any, in its place, and notes rows that were set aside, left out or moved, or that there were
    /// none at all.
    void Finish(const RowCounts& a_counts);

private:
    ToolContext& m_context;
    bool m_dropsRepeated;
    std::unique_ptr<OutputTarget> m_rejects; // null: nowhere
};

} // namespace kalvento::tool
