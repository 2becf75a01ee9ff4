#pragma once

/// Makes OpenGL hand pictures over in the rows that libobs reads.
///
/// OpenGL pads each row to a multiple of 4 bytes, and libobs (29.0 at least) takes none of that into account: where
/// half the width of the picture is no multiple of 4, each row of colours comes out shifted against the one above it,
/// and a slanting green line runs through the recording. Nothing is done where the graphics are other ones, or where
/// libobs counts the padding. The setting stays with the graphics; to be made after the video was reset, on any thread.
void packPictureRows();
