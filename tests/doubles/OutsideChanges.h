#pragma once

#include <string>

namespace kiv::test {

enum class TOutsideChanges {
  AtRandom,  ///< makes, renames, moves, rewrites and deletes in three levels of folders with twelve names each
  ComeAndGo, ///< makes one empty file and deletes it, over and over
  Numbered   ///< makes, renames, rewrites and deletes files in the folder itself: "0.txt" to twice as many as changes
};

/// Changes what is in a folder, and makes the empty file `pLast` at the end: as fast as it can and without a pause, or,
/// files that come and go, `pPerSecond` changes a second, some each millisecond; of what it is late it makes up for a
/// hundredth of a second at most.
/// Where the platform runs native programs of another system (Wine), one of those does it, which is much quicker; else
/// this process itself. Comes back when that has begun; nothing of it may be left when the folder goes.
void ChangeFromOutside(const std::wstring& pFolder, TOutsideChanges pKind, unsigned pSeed, int pCount,
                       const std::wstring& pLast, int pPerSecond = 0);

} // namespace kiv::test
