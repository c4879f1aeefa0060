#pragma once

#include "platform/CArchive.h"
#include "platform/CArchiveException.h"
#include "platform/CMemFile.h"
#include "support/Testing.h"

using Bytes = std::vector<std::byte>;

/// What an action writes into an archive.
template<class Action>
Bytes Stored(Action a_action, int a_bufferSize = 4096)
{
    CMemFile file;
    CArchive archive(&file, CArchive::store, a_bufferSize);
    a_action(archive);
    archive.Close();
    return file.Detach();
}

/// The kind of failure that reading the bytes ends in; none where it ends well. Other exceptions pass through.
template<class Action>
CArchiveException::Cause CauseOf(const Bytes& a_bytes, Action a_action)
{
    CMemFile file(a_bytes);
    CArchive archive(&file, CArchive::load);
    try {
        a_action(archive);
    } catch (const CArchiveException& failure) {
        return failure.m_cause;
    }
    return CArchiveException::none;
}

/// Bytes that end at any place before their end are refused for one of these causes.
template<class Action>
void ExpectEachCutRefused(const Bytes& a_bytes, Action a_action,
                          const std::set<CArchiveException::Cause>& a_causes = {CArchiveException::endOfFile})
{
    for (auto end = a_bytes.begin(); end != a_bytes.end(); ++end)
        EXPECT_TRUE(a_causes.contains(CauseOf({a_bytes.begin(), end}, a_action)))
            << "cut at " << end - a_bytes.begin();
}
