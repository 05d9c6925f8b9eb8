#pragma once

// Colours, fonts, drawing, pictures, image lists, themes and dark mode.
#include <graphics/Bitmap.h>
#include <graphics/Canvas.h>
#include <graphics/ImageList.h>
#include <graphics/Picture.h>
#include <graphics/StyleServices.h>
