#pragma once

/// The program's exit codes. Scripts test these numbers: never renumber.
enum EExitCode : int {
    EExitOk = 0, ///< Done. Also when the reader of standard output went away early (`kalvento ... | head`).
    EExitFailure = 1, ///< The machine refused: no memory, a full disk, a file that can't be written.
    EExitUsage = 2,   ///< The command line makes no sense: unknown option, impossible value or combination.
    EExitBadData =
        3, ///< The input was read but can't be taken: a bad line, a missing column, a damaged block.
    EExitNoInput = 4,  ///< An input file can't be opened or read.
    EExitDifferent = 5 ///< A check found what it was told to look for: nothing failed, the answer is "no".
};
