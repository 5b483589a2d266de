/// The string dictionary of the serialized objects: the strings that occur in nearly every directory object,
/// each with a fixed index. Releases that changed the list kept the old ones. Each of the nine lists is
/// identified by a number called its checksum: the digits in its functions' names, read as hexadecimal.
///
/// To read a blob that an older release wrote:
///   int sum = GetDictionarySum("5.0.3-134");
///   StringArray dictionary(&GetDictionaryMap(sum), &GetDictionaryVector(sum));
///   object.deSerialize(ADSerializer::kHeaderSize, dictionary, true);
///
/// Each list is created on first use and stays until the process ends. Thread-safe.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/export.h>
#include <fokrazo/stringarray.h>

namespace vesk {

/// Entries by index, and indexes by entry; always exact inverses.
using DictionaryVector = std::vector<std::string>;
using DictionaryMap = StringArray::Map;

/// The current list, which all writers use.
FOKRAZO_API const DictionaryVector& GetDictionaryVector();
FOKRAZO_API const DictionaryMap& GetDictionaryMap();
FOKRAZO_API int GetDictionarySum();

/// The list with that checksum. @throws NotFoundException "Old Map not found" for any other number
FOKRAZO_API const DictionaryVector& GetDictionaryVector(int checksum);
FOKRAZO_API const DictionaryMap& GetDictionaryMap(int checksum);
/// The checksum of the list that a release, given by its exact version, wrote with.
/// @throws NotFoundException "versionNum is empty", "CheckSum not found"
FOKRAZO_API int GetDictionarySum(const std::string& versionNum);

/// Prints releases and checksums to standard output.
FOKRAZO_API void ShowDictionarysList();

// The nine lists, oldest first, with their maps and checksums; 16090 is the current one again.

FOKRAZO_API const DictionaryVector& GetDictionaryVector15487();
FOKRAZO_API const DictionaryMap& GetDictionaryMap15487();
FOKRAZO_API int GetDictionarySum15487();

FOKRAZO_API const DictionaryVector& GetDictionaryVector15667();
FOKRAZO_API const DictionaryMap& GetDictionaryMap15667();
FOKRAZO_API int GetDictionarySum15667();

FOKRAZO_API const DictionaryVector& GetDictionaryVector12258();
FOKRAZO_API const DictionaryMap& GetDictionaryMap12258();
FOKRAZO_API int GetDictionarySum12258();

FOKRAZO_API const DictionaryVector& GetDictionaryVector27271();
FOKRAZO_API const DictionaryMap& GetDictionaryMap27271();
FOKRAZO_API int GetDictionarySum27271();

FOKRAZO_API const DictionaryVector& GetDictionaryVector30618();
FOKRAZO_API const DictionaryMap& GetDictionaryMap30618();
FOKRAZO_API int GetDictionarySum30618();

FOKRAZO_API const DictionaryVector& GetDictionaryVector60690();
FOKRAZO_API const DictionaryMap& GetDictionaryMap60690();
FOKRAZO_API int GetDictionarySum60690();

FOKRAZO_API const DictionaryVector& GetDictionaryVector45829();
FOKRAZO_API const DictionaryMap& GetDictionaryMap45829();
FOKRAZO_API int GetDictionarySum45829();

FOKRAZO_API const DictionaryVector& GetDictionaryVector36361();
FOKRAZO_API const DictionaryMap& GetDictionaryMap36361();
FOKRAZO_API int GetDictionarySum36361();

FOKRAZO_API const DictionaryVector& GetDictionaryVector16090();
FOKRAZO_API const DictionaryMap& GetDictionaryMap16090();
FOKRAZO_API int GetDictionarySum16090();

/// The releases and the checksums of their lists, oldest first; "0" and 0 end them.
constexpr int kReleaseRows = 36;
FOKRAZO_API extern const char* const version[kReleaseRows];
FOKRAZO_API extern const int sum[kReleaseRows];

}  // namespace vesk
