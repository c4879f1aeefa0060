// A provider that saves a history, operations and settings, each on a thread of its own, round after round and for ever.
// What is saved is reported once the save has returned.
#include "contract_kit/TestProvider.h"
#include "kills/SavedContents.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "support/Testing.h"

#include <unistd.h>

namespace {

struct Task {
    std::filesystem::path folder;
    int reports = -1;
    std::uint32_t first = 0;

    // The process ends by a failed save, which the test then sees.
    void SaveForEver(EFile a_file) const
    {
        for (std::uint32_t number = first;; ++number) {
            if (!Save(a_file, folder, number))
                _exit(2);
            const std::array<std::uint32_t, 2> message = {a_file, number};
            if (write(reports, message.data(), sizeof(message)) != sizeof(message))
                _exit(1);
        }
    }
};

class SavingProvider : public TestProvider {
public:
    explicit SavingProvider(Task a_task) : TestProvider(L"Saving"), m_task(std::move(a_task)) {}
    ~SavingProvider() override
    {
        for (std::thread& thread : m_threads)
            if (thread.joinable()) // not before Init
                thread.join();
    }
    bool Init() override
    {
        for (const EFile file : {EHistory, EOperations, ESettings})
            m_threads.at(file) = std::thread([this, file] { m_task.SaveForEver(file); });
        return true;
    }

private:
    const Task m_task;
    std::array<std::thread, EFileCount> m_threads;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    const Task task{static_cast<std::wstring>(a_options["Folder"]), static_cast<int>(a_options["Reports"]),
                    static_cast<std::uint32_t>(a_options["First"])};
    a_registry.AddProvider(std::make_unique<SavingProvider>(task));
}

} // namespace

KALVENTO_PLUGIN("saving_modules", "1.0", &CreateModules)
