// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settingstables.h"

namespace settingstables {

const PositionToText kRecordingFormats{{0, "MP4"}, {1, "AVI"}, {2, "FLV"}, {3, "GIF"},
                                       {4, "MP3"}, {5, "AAC"}, {6, "FLAC"}};

const TextToPosition kRecordingFormatPositions = kRecordingFormats.reversed();

const PositionToText kScreenshotFormats{{0, "PNG"}, {1, "JPG"}};

const TextToPosition kScreenshotFormatPositions = kScreenshotFormats.reversed();

const PositionToText kLanguageCodes{{0, "en_US"}, {1, "de_DE"}, {2, "oc_FR"}, {3, "es_ES"}, {4, "pt_PT"},
                                    {5, "it_IT"}, {6, "zh_CN"}, {7, "zh_TW"}, {8, "ja_JP"}};

const TextToPosition kLanguagePositions = kLanguageCodes.reversed();

const PositionToText kLanguageMenuNames{
    {0, QStringLiteral("English")},  {1, QStringLiteral("Deutsch")},   {2, QStringLiteral("Français")},
    {3, QStringLiteral("Español")},  {4, QStringLiteral("Português")}, {5, QStringLiteral("Italiano")},
    {6, QStringLiteral("简体中文")}, {7, QStringLiteral("繁體中文")},  {8, QStringLiteral("日本語")}};

const TextToPosition kLanguageMenuPositions = kLanguageMenuNames.reversed();

} // namespace settingstables
