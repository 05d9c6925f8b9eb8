#pragma once

namespace kiv::bench {

/// Milliseconds of the longest turn of the main thread while another process makes so many changes in nested folders,
/// as fast as it can, and a subscriber follows them, whose own time doesn't count. A huge number if what the subscriber
/// knows isn't what is there at the end.
double LongestTurn(int pCount);
struct TQueuedChanges {
  double each = 0; ///< microseconds from one change to the next
  int lost = 0;
};
/// So many files made or deleted by another process at a given pace, until the watcher's queue has all that comes of
/// it.
TQueuedChanges ChangesToQueue(int pCount, int pPerSecond);
/// Microseconds each event, behind the first one, until a notifier has told them all with paths.
double ChangesToPaths(int pCount);
/// How many threads come when a notifier watches so many folders instead of one.
double ThreadsOfWatches(int pCount);

} // namespace kiv::bench
