#pragma once
// File names as the display leaves them: bytes, mostly UTF-8, but in trees
// written without a UTF-8 locale or copied from a stick with a Windows code
// page, Latin-1 or Windows-1252. Qt holds paths as text; these functions
// make that text carry the bytes of every name exactly, and give the name an
// item is known by.

#include <QString>

// Makes Qt's file names byte-exact for the rest of the process: a name is
// decoded as UTF-8, and each byte that is not part of valid UTF-8 becomes
// the unpaired surrogate U+DC80..U+DCFF, which turns back into that byte
// whenever the path is opened or listed. Without it, such a byte becomes
// U+FFFD and the file can no longer be opened by its path.
void keep_file_name_bytes();

// The name an item is known by: `file_name` (one path component, as Qt
// lists it) when its bytes are UTF-8, otherwise its bytes decoded as
// Windows-1252, which covers Latin-1's printable range.
QString decoded_file_name(QString const& file_name);
