#include "kalvento/DatabaseOption.h"

#include "kalvento/ToolContext.h"

#include <stdexcept>

namespace kalvento::tool {

SqlAddress DatabaseOption(const std::string& a_text)
{
    try {
        return SqlAddress(a_text);
    } catch (const GivenPassword&) {
        throw ToolError(
            EExitUsage,
            "--database: holds a password, which everybody who lists the processes can see; put it "
            "into ~/.pgpass (or a file named by passfile=, or PGPASSWORD) and leave it out");
    } catch (const std::invalid_argument&) {
        throw ToolError(EExitUsage,
                        "--database: can't be read; expected \"host=HOST dbname=NAME user=USER\" or "
                        "postgresql://USER@HOST/NAME");
    }
}

} // namespace kalvento::tool
