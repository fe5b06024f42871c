// Result codes of the scanner library and of its binding. 0 is success, failures are negative.
// Every code below has an entry in the installed ErrorCode.xml. Shared with the library; std only.
#pragma once

namespace orva {

enum ResultCode : int
{
    kOk = 0,

    // the call
    kFailed = -1, ///< no more is known
    kNotInitialised = -10, ///< Init has not been called, or failed
    kNoScannerSelected = -11,
    kIndexOutOfRange = -12,
    kBadArgument = -13, ///< null pointer, zero size
    kBusy = -14, ///< a job is running
    kNotSupported = -15, ///< the device or this version does not offer it
    kValueOutOfRange = -16,

    // the device
    kDeviceNotFound = -20, ///< switched off, unplugged, or gone from the list
    kDeviceLost = -21, ///< went away while a job ran
    kDeviceBusy = -22, ///< another program uses it
    kAccessDenied = -23,
    kDeviceIo = -24, ///< cable, power, or anything the driver does not tell
    kDeviceTimeout = -25, ///< it does not answer
    kDriverCrashed = -26,
    kDeviceBadParameter = -27, ///< it refuses the settings

    // the paper
    kNoPaper = -40,
    kPaperJam = -41,
    kDoubleFeed = -42,
    kCoverOpen = -43,
    kCancelled = -44, ///< not an error: the operator or the device ended the job

    // the output
    kFolderMissing = -50, ///< removed, or cannot be made
    kDiskFull = -51,
    kFileWrite = -52,
    kFolderReadOnly = -53,
    kBadFileName = -54,
    kNoFreeName = -55,
    kFormatNotSupported = -56,

    // the page
    kNoMemory = -60,
    kPageTooLarge = -61,
    kDamagedPage = -62, ///< a page image that cannot be read

    // text recognition
    kModelMissing = -70,
    kRecognitionFailed = -71,

    kInternal = -99, ///< a fault of the library itself; its log tells more

    // the binding, never given by the library
    kEntryPointMissing = -401, ///< LoadDll: a required entry point is missing
    kNotLoaded = -404, ///< no library, or the entry point is not bound
};

} // namespace orva
