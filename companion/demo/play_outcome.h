#pragma once

/// How the playing of files has ended.
enum class PlayOutcome {
    AsExpected,
    Failed,
    /// There is a file that can't be read, or nothing to play; nothing was played.
    NotPlayed
};
