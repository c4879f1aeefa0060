#pragma once

#include "platform/CFile.h"

#include <span>
#include <vector>

/// A file in memory: either bytes of its own, which grow, or a block of somebody else, which is only read.
class KALVENTO_API CMemFile : public CFile {
public:
    /// Empty, with bytes of its own.
    CMemFile() = default;
    /// Reads a block from its beginning. Not owned: the block outlives the file and doesn't change meanwhile.
    explicit CMemFile(std::span<const std::byte> a_block) : m_block(a_block), m_isBorrowed(true) {}
    ~CMemFile() override;

    std::size_t Read(void* a_bytes, std::size_t a_size) override;
    /// A borrowed block raises std::logic_error: its owner may be reading it too.
    void Write(const void* a_bytes, std::size_t a_size) override;
    std::uint64_t GetLength() const override { return Bytes().size(); }
    std::uint64_t GetPosition() const override { return m_position; }
    /// Back to the beginning, to read what was written.
    void SeekToBegin() { m_position = 0; }

    /// Gives the own bytes away and leaves the file empty; a borrowed block is let go and nothing is given.
    std::vector<std::byte> Detach();

private:
    std::span<const std::byte> Bytes() const { return m_isBorrowed ? m_block : m_own; }

    std::vector<std::byte> m_own;
    std::span<const std::byte> m_block;
    bool m_isBorrowed = false;
    std::size_t m_position = 0; // <= Bytes().size()
};
