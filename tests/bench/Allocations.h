#pragma once

namespace kiv::bench {

/// How often memory was asked for so far. Exact as long as one thread is at work.
long AllocationCount() noexcept;

} // namespace kiv::bench
