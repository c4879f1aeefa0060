// Blocks come from files and from other programs: whatever the bytes say, reading them may refuse, and nothing that is
// done with the set afterwards may leave its memory.
#include "folding/AggregatorWrapper.h"
#include "series/History.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "series/VectorTimeTester.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

std::string Write(const DataSeriesSet& a_set)
{
    std::ostringstream stream;
    a_set.Write(stream);
    return stream.str();
}

template<class Set>
Set ReadBlock(const std::string& a_bytes)
{
    std::istringstream stream(a_bytes);
    return Set(stream);
}

void UseHistory(const History& a_history)
{
    NDateTime first;
    NDateTime last;
    if (a_history.GetTimes(first, last)) {
        a_history.GetFirstLastYear();
        a_history.GetLastRecord();
        VectorTimeTester::CheckIntegrity(a_history.TimeSeries(), &first);
        VectorTimeTester::ChangeRange(a_history.TimeSeries(), first, last);
        try {
            History part = a_history.GetSubHistory(first, last);
            part.InsertedHistoryAtTheBeginning(a_history);
        } catch (const std::invalid_argument&) {
            // The dates may stand in the wrong order, and the block may lack series.
        }
    }
    if (a_history.SeriesCount() > 0)
        a_history.GetEmptyRecord();
}

void Fold(const std::string& a_bytes, EInterval a_interval, unsigned short a_multiplicity)
{
    AggregatorWrapper wrapper({DSProp(Price), DSProp(Volume)}, ELastRecordTime, a_interval, a_multiplicity);
    auto history = ReadBlock<History>(a_bytes);
    if (wrapper.AgregateHistory(history) && !history.IsValid())
        std::abort();
    wrapper.ClearLastValue();
    auto synchro = ReadBlock<Synchronization>(a_bytes);
    wrapper.AgregateSynchro(synchro);
    if (synchro.IsEmpty())
        return;
    Record row = synchro.GetLastRecord();
    bool sameWindow = false;
    wrapper.SetCurrentRecord(row);
    wrapper.AggregateRecord(row, sameWindow);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size)
{
    const std::string bytes(reinterpret_cast<const char*>(a_data), a_size);
    try {
        const auto history = ReadBlock<History>(bytes);
        // What was read is written in the same form again; a valid set was read whole but for trailing zeros.
        const std::string written = Write(history);
        if (Write(ReadBlock<History>(written)) != written)
            std::abort();
        if (history.IsValid() && bytes.compare(0, written.size(), written, 0, bytes.size()) != 0)
            std::abort();
        UseHistory(history);
        Fold(bytes, EIntervalMinute, 5);
        Fold(bytes, EIntervalTick, 3);
        Fold(bytes, EIntervalMonth, 1);
    } catch (const std::exception&) {
        // An unknown version or a count that nothing can hold.
    }
    return 0;
}
