// Pictures on the screen and in files.
#pragma once

#include <windows.h>

#include <string>

#include "standins/office/window/Gdi.h"

struct Image {
    GdiObject bitmap;
    SIZE size;
};

// A PNG file as a bitmap; throws std::runtime_error when it cannot be read.
Image LoadImageFile(const std::wstring& path);

// Writes a bitmap as a PNG file; throws std::runtime_error when it cannot be written.
void SaveImageFile(const Image& image, const std::wstring& path);

// What the screen shows there.
Image CaptureScreen(const RECT& area);
