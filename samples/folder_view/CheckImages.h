#pragma once

#include <graphics/ImageList.h>

#include <memory>

namespace kiv::sample {

/// The boxes for the states of a selection from ssDisabled on, in their order.
std::unique_ptr<TImageList> MakeCheckImages(int pSize, int pDpi);

} // namespace kiv::sample
