// Hard limits for a process that reads files it did not choose: file managers run the
// thumbnailer on whatever lands in a folder, so a hostile or broken file must cost a bounded
// amount of memory and time and then end the process, never hang it.
#pragma once

// The thumbnailer's own limits; file managers do not all have them. Work is counted in
// processor time, so that a busy machine does not cut a thumbnail short; the wall-clock
// deadline catches a process that waits instead of working.
inline constexpr unsigned kThumbnailerProcessorSeconds = 5;
inline constexpr unsigned kThumbnailerDeadlineSeconds = 30;

// Caps the address space (well above what the largest accepted file needs) and the
// processor time, turns off core dumps and starts the deadline. A process over its time
// exits with status 1.
void limitThumbnailerProcess();

// Stops the time limits before the result is written, so that running out of time cannot
// leave a partial file.
void stopThumbnailerTimeLimits();
