// The records that cross the scanner library's border by value. The library reads them as raw
// memory, so order, widths, array sizes and padding are fixed: little-endian, natural alignment,
// no packing. This header is shared with the library and includes nothing but std.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

/// Image processing settings of one job. 68 bytes. Flags are 0 or 1.
struct ImageParam
{
    std::uint8_t bAutoLevel; ///< automatic levels
    std::uint8_t bAutoCropDeskew; ///< automatic crop and deskew
    std::int32_t nBrightness; ///< -100..100; 0 in black-and-white
    std::int32_t nContrast; ///< -100..100; 0 in black-and-white
    std::int32_t nThresold; ///< 0..255; 0 unless black-and-white
    float nGamma; ///< 0.1..5.0; 0.0 in black-and-white
    std::int32_t nRotateAngle; ///< RotateAngle in codes.h
    std::int32_t nColorDropout; ///< ColorDropout in codes.h
    std::uint8_t bAdvColorDropout; ///< reinforced dropout
    std::int32_t nSplit; ///< 0 none, 1 top/bottom, 2 left/right
    std::int32_t nMerge; ///< 0 none, 1 top/bottom, 2 left/right
    std::int32_t nDenoise; ///< 0 off, 3 normal, 4 strong; 1 and 2 do not exist
    std::int32_t nBackGround; ///< background colour removal, 0 or 1
    std::uint8_t bAutoText; ///< automatic text orientation
    std::int32_t nAutoTextMode; ///< 0 off, 1 fast, 2 full text, 3 complex
    std::uint8_t bMultiFeed; ///< double-feed detection
    std::uint8_t bRemoveHole; ///< punch-hole removal
    std::uint8_t bRemoveBlank; ///< skip blank pages
    std::int32_t nBlankThresoldValue; ///< 0..100
    std::uint8_t bDeviceOption; ///< the device has the maker's own options
};

/// Output file settings of one job. 312 bytes. Arrays hold NUL-terminated UTF-8.
struct FileParam
{
    char szFilePath[256]; ///< output folder
    char szFileName[20]; ///< prefix of the file name
    std::uint8_t bSameNameCover; ///< 1 overwrite a file of the same name, 0 add a number
    std::uint8_t bTimeNamed; ///< 1 name by date and time, 0 by serial number
    char szSeparator[5]; ///< separator between the parts of the name
    std::int32_t
        nTimeNamedType; ///< 0 year-month-day, 1 month-day-year, 2 day-month-year, -1 unknown
    char szIndex[11]; ///< serial start in decimal, padded with "0"
    std::int32_t nMultiPage; ///< 1 all pages in one file, 0 one file a page
    std::int32_t nFormatIndex; ///< FileFormat in codes.h
    std::int32_t nDocType; ///< document type; selects the row of stFileTypeParam
};

/// Defaults of one document type, as the library hands them out. 28 bytes a row.
struct stFileTypeParam
{
    std::int32_t nTypeWord0; ///< owned by the library
    std::int32_t nTypeWord1; ///< owned by the library
    std::int32_t nTypeWord2; ///< owned by the library
    std::int32_t nDefBrightness;
    std::int32_t nDefContrast;
    std::int32_t nDefThreshold;
    std::int32_t nDefGamma10; ///< gamma times ten: 11 means 1.1
};

/// Geometry of the last scanned side. The library's own; the application never reads it.
struct _tagPageParameter
{
    std::int32_t nPage; ///< side number in the job, from 1; 0 when nothing was scanned
    std::int32_t nWidth; ///< pixels
    std::int32_t nHeight; ///< pixels
    std::int32_t nBitsPerPixel; ///< 1, 8 or 24
    std::int32_t nResolutionX; ///< dots per inch
    std::int32_t nResolutionY; ///< dots per inch
};

/// Tells the application what a running job does. Called on a thread of the library, one call at a
/// time. state: 1 one side scanned, 2 one file complete on disk (fileName is its full path), -1 the
/// job has ended (exactly once, last); others are progress. page: number of sides so far.
using OrvaStateCallback = void (*)(int state, int page, std::string fileName);
/// Tells the application an error code (result_codes.h). Called on a thread of the library.
using OrvaErrorCallback = int (*)(int errorCode);

#define ORVA_FIELD_AT(record, field, offset)                                                       \
    static_assert(offsetof(record, field) == (offset), #record "::" #field)

static_assert(sizeof(ImageParam) == 68 && alignof(ImageParam) == 4, "ImageParam");
static_assert(std::is_trivially_copyable<ImageParam>::value, "ImageParam");
ORVA_FIELD_AT(ImageParam, bAutoLevel, 0);
ORVA_FIELD_AT(ImageParam, bAutoCropDeskew, 1);
ORVA_FIELD_AT(ImageParam, nBrightness, 4);
ORVA_FIELD_AT(ImageParam, nContrast, 8);
ORVA_FIELD_AT(ImageParam, nThresold, 12);
ORVA_FIELD_AT(ImageParam, nGamma, 16);
ORVA_FIELD_AT(ImageParam, nRotateAngle, 20);
ORVA_FIELD_AT(ImageParam, nColorDropout, 24);
ORVA_FIELD_AT(ImageParam, bAdvColorDropout, 28);
ORVA_FIELD_AT(ImageParam, nSplit, 32);
ORVA_FIELD_AT(ImageParam, nMerge, 36);
ORVA_FIELD_AT(ImageParam, nDenoise, 40);
ORVA_FIELD_AT(ImageParam, nBackGround, 44);
ORVA_FIELD_AT(ImageParam, bAutoText, 48);
ORVA_FIELD_AT(ImageParam, nAutoTextMode, 52);
ORVA_FIELD_AT(ImageParam, bMultiFeed, 56);
ORVA_FIELD_AT(ImageParam, bRemoveHole, 57);
ORVA_FIELD_AT(ImageParam, bRemoveBlank, 58);
ORVA_FIELD_AT(ImageParam, nBlankThresoldValue, 60);
ORVA_FIELD_AT(ImageParam, bDeviceOption, 64);

static_assert(sizeof(FileParam) == 312 && alignof(FileParam) == 4, "FileParam");
static_assert(std::is_trivially_copyable<FileParam>::value, "FileParam");
ORVA_FIELD_AT(FileParam, szFilePath, 0);
ORVA_FIELD_AT(FileParam, szFileName, 256);
ORVA_FIELD_AT(FileParam, bSameNameCover, 276);
ORVA_FIELD_AT(FileParam, bTimeNamed, 277);
ORVA_FIELD_AT(FileParam, szSeparator, 278);
ORVA_FIELD_AT(FileParam, nTimeNamedType, 284);
ORVA_FIELD_AT(FileParam, szIndex, 288);
ORVA_FIELD_AT(FileParam, nMultiPage, 300);
ORVA_FIELD_AT(FileParam, nFormatIndex, 304);
ORVA_FIELD_AT(FileParam, nDocType, 308);

static_assert(sizeof(stFileTypeParam) == 28 && alignof(stFileTypeParam) == 4, "stFileTypeParam");
ORVA_FIELD_AT(stFileTypeParam, nTypeWord0, 0);
ORVA_FIELD_AT(stFileTypeParam, nTypeWord1, 4);
ORVA_FIELD_AT(stFileTypeParam, nTypeWord2, 8);
ORVA_FIELD_AT(stFileTypeParam, nDefBrightness, 12);
ORVA_FIELD_AT(stFileTypeParam, nDefContrast, 16);
ORVA_FIELD_AT(stFileTypeParam, nDefThreshold, 20);
ORVA_FIELD_AT(stFileTypeParam, nDefGamma10, 24);

#undef ORVA_FIELD_AT
