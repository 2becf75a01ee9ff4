// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settingstables.h"

namespace settingstables {

const PositionToText& recordingFormats()
{
    static const PositionToText table{{0, "MP4"}, {1, "AVI"}, {2, "FLV"}, {3, "GIF"},
                                      {4, "MP3"}, {5, "AAC"}, {6, "FLAC"}};
    return table;
}

const TextToPosition& recordingFormatPositions()
{
    static const TextToPosition table = recordingFormats().reversed();
    return table;
}

const PositionToText& screenshotFormats()
{
    static const PositionToText table{{0, "PNG"}, {1, "JPG"}};
    return table;
}

const TextToPosition& screenshotFormatPositions()
{
    static const TextToPosition table = screenshotFormats().reversed();
    return table;
}

const PositionToText& languageCodes()
{
    static const PositionToText table{{0, "en_US"}, {1, "de_DE"}, {2, "oc_FR"}, {3, "es_ES"}, {4, "pt_PT"},
                                      {5, "it_IT"}, {6, "zh_CN"}, {7, "zh_TW"}, {8, "ja_JP"}};
    return table;
}

const TextToPosition& languagePositions()
{
    static const TextToPosition table = languageCodes().reversed();
    return table;
}

const PositionToText& languageMenuNames()
{
    static const PositionToText table{
        {0, QStringLiteral("English")},  {1, QStringLiteral("Deutsch")},   {2, QStringLiteral("Français")},
        {3, QStringLiteral("Español")},  {4, QStringLiteral("Português")}, {5, QStringLiteral("Italiano")},
        {6, QStringLiteral("简体中文")}, {7, QStringLiteral("繁體中文")},  {8, QStringLiteral("日本語")}};
    return table;
}

const TextToPosition& languageMenuPositions()
{
    static const TextToPosition table = languageMenuNames().reversed();
    return table;
}

} // namespace settingstables
