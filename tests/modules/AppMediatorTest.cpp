#include "modules/IAppMediator.h"

#include "contract_kit/TestMediator.h"
#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"

#include <sys/stat.h>

TEST(AppMediatorTest, StopWorkEndsWhatWasToBeKept)
{
    const TemporaryFolder folder;
    TestMediator mediator;
    EXPECT_FALSE(mediator.OpenProcess(L"/nie/ma/takiego", L"", true));
    EXPECT_FALSE(mediator.IsDroppingInProgress());
    std::vector<std::ifstream> pipes;
    for (const char* name : {"first", "second"}) {
        const auto pipe = folder / name;
        ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
        ASSERT_TRUE(
            mediator.OpenProcess(L"sh", L"-c \"exec sleep 1000 > " + WidePath::ToWide(pipe) + L"\"", true));
        pipes.emplace_back(pipe); // opens once the program runs
    }
    mediator.StopWork();
    // The end of a pipe tells that its program is gone.
    for (auto& pipe : pipes)
        EXPECT_EQ(pipe.get(), std::ifstream::traits_type::eof());
    // Forgotten, so a second end of work finds nothing.
    mediator.StopWork();
}
