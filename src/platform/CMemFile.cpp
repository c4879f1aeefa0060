#include "platform/CMemFile.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

CMemFile::~CMemFile() = default;

std::size_t CMemFile::Read(void* a_bytes, std::size_t a_size)
{
    const std::size_t taken = std::min(a_size, Bytes().size() - m_position);
    if (taken != 0)
        std::memcpy(a_bytes, Bytes().data() + m_position, taken);
    m_position += taken;
    return taken;
}

void CMemFile::Write(const void* a_bytes, std::size_t a_size)
{
    if (m_isBorrowed)
        throw std::logic_error("CMemFile::Write: blok należy do kogoś innego i można go tylko czytać"_cp1250);
    if (a_size == 0)
        return;
    if (a_size > m_own.size() - m_position)
        m_own.resize(m_position + a_size);
    std::memcpy(m_own.data() + m_position, a_bytes, a_size);
    m_position += a_size;
}

std::vector<std::byte> CMemFile::Detach()
{
    m_position = 0;
    m_isBorrowed = false;
    m_block = {};
    return std::exchange(m_own, {});
}
