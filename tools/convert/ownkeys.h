// What this program adds to the files of other formats, so that reading them back loses less.
#pragma once

namespace convert
{
constexpr const char *KESTO_KEY = "kesto";             // member of the whole file, an object with
constexpr const char *KESTO_FRAME_KEY = "frame";       // the name of the scopes that are the frames
constexpr const char *KESTO_CALLS_KEY = "kesto_calls"; // argument of an event: how many calls it stands for
constexpr const char *FOLDED_FRAME_NAME = "[frame]";   // the stack of a frame's own time
} // namespace convert
