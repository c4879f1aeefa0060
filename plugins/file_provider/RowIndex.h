#pragma once

#include "file_provider/CacheContents.h"
#include "file_provider/PartFiles.h"

#include <optional>

/// The file "Index.xml" beside the parts of a file of rows: what is kept of that file, with a checksum.
namespace kalvento::files::RowIndex {

/// Empty where there is none, or it is damaged. Takes nothing on trust: what an index claims must be possible, and its
/// parts must lie beside it with the lengths that it states.
std::optional<CacheContents> Load(const PartFiles& a_files);
/// Where it can't be written, which is logged, the text is read again at the next start.
void Save(const PartFiles& a_files, const CacheContents& a_contents);

} // namespace kalvento::files::RowIndex
