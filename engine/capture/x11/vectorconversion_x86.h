// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct RowPair;

/// Kinds of VideoConversionKind::convert. Calling one that the processor does not have ends the program.
int convertRowPairSse2(const RowPair& rows, int widthPx);
int convertRowPairAvx2(const RowPair& rows, int widthPx);
