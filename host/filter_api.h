// The host's filter interface on 64-bit Windows: the records, callbacks and suites that a filter meets. Declarations
// only, with no logic and nothing of Windows in them, so that they also compile where there is no Windows.
//
// Words of the host:
//   selector    the number that tells PluginMain which step of a run to perform
//   record      FilterRecord, the host's shared state for one run; the plug-in's requests are written into it as well
//   plane       one channel of the image, transparency included; planes are numbered from 0
//   advance     the host commits the output buffer and delivers the areas that the record requests
//   handle      a movable block. The outer pointer is its identity; the inner one is the data's address and may be
//               relied on only while the handle is locked. Locks aren't counted: one unlock undoes any number
//   buffer      a large block behind an opaque id, locked in the same way
//   suite       a table of functions, acquired from the basic suite by name and exact version, and released again
//   descriptor  an ordered list of keys with typed values. Script descriptors are handles that are read and written
//               through tokens; action descriptors are opaque objects of a suite, and the registry keeps those
//   matte, mask how the pixels of a preview map are composited
//
// Rules that hold throughout: coordinates grow right and down, and bottom and right are exclusive. Points and
// rectangles put the vertical number first. A result or argument narrower than its register has undefined upper bits,
// so the widths here are the true ones. FilterRecord and BigDocumentStruct are packed to 4 bytes and everything else
// is naturally aligned. Pointers inside the two packed records can be misaligned: their members are read and written
// by value, and no pointer or reference to one is formed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/four_char_code.h"

namespace stairmelt {

// Verifies a member's offset in the host's memory.
#define STAIRMELT_FIELD_AT(Record, field, offset) \
    static_assert(offsetof(Record, field) == (offset), #Record "::" #field " is misplaced")

// ---- Plain types ----

using OSErr = int16_t;
using SPErr = int32_t;
using Boolean = uint8_t;  // 0 is false, anything else true
using SPBoolean = int32_t;
using Fixed = int32_t;  // 16.16
using Ptr = char*;
using Handle = Ptr*;
using PIDescriptorHandle = Handle;
using BufferID = struct HostBuffer*;
using PIReadDescriptor = struct HostReadDescriptor*;    // null for none
using PIWriteDescriptor = struct HostWriteDescriptor*;  // null for none
using PIActionDescriptor = struct HostActionDescriptor*;
using DescriptorKeyID = uint32_t;
using DescriptorTypeID = uint32_t;
using Str255 = uint8_t[256];    // length byte first
using UnusedSlot = void (*)();  // a routine that this plug-in never calls

#pragma pack(push, 4)

struct Point {
    int16_t v, h;
};

struct Rect {
    int16_t top, left, bottom, right;
};

struct VPoint {
    int32_t v, h;
};

struct VRect {
    int32_t top, left, bottom, right;
};

#pragma pack(pop)

static_assert(sizeof(Point) == 4 && sizeof(Rect) == 8 && sizeof(VPoint) == 8 && sizeof(VRect) == 16);
static_assert(sizeof(void*) == 8 && sizeof(UnusedSlot) == 8);

// ---- Numbers ----

// In the order of a run from the menu. A repeat of the last filter omits Parameters. About is sent on its own, with an
// AboutRecord.
constexpr int16_t kFilterSelectorAbout = 0;
constexpr int16_t kFilterSelectorParameters = 1;
constexpr int16_t kFilterSelectorPrepare = 2;
constexpr int16_t kFilterSelectorStart = 3;
constexpr int16_t kFilterSelectorContinue = 4;
constexpr int16_t kFilterSelectorFinish = 5;

constexpr uint32_t kPhotoshopSignature = FourCharCode("8BIM");

// FilterRecord::imageMode.
constexpr int16_t kModeBitmap = 0;
constexpr int16_t kModeGrayScale = 1;
constexpr int16_t kModeIndexedColor = 2;
constexpr int16_t kModeRGBColor = 3;
constexpr int16_t kModeCMYKColor = 4;
constexpr int16_t kModeHSLColor = 5;
constexpr int16_t kModeHSBColor = 6;
constexpr int16_t kModeMultichannel = 7;
constexpr int16_t kModeDuotone = 8;
constexpr int16_t kModeLabColor = 9;
constexpr int16_t kModeGray16 = 10;
constexpr int16_t kModeRGB48 = 11;
constexpr int16_t kModeLab48 = 12;
constexpr int16_t kModeCMYK64 = 13;
constexpr int16_t kModeDeepMultichannel = 14;
constexpr int16_t kModeDuotone16 = 15;
constexpr int16_t kModeRGB96 = 16;
constexpr int16_t kModeGray32 = 17;

// FilterRecord::filterCase.
constexpr int16_t kFilterCaseFlatImageNoSelection = 1;
constexpr int16_t kFilterCaseFlatImageWithSelection = 2;
constexpr int16_t kFilterCaseFloatingSelection = 3;
constexpr int16_t kFilterCaseEditableTransparencyNoSelection = 4;
constexpr int16_t kFilterCaseEditableTransparencyWithSelection = 5;

// PIDescriptorParameters::playInfo: whether a script wants the dialog.
constexpr int16_t kPlugInDialogDontDisplay = 0;
constexpr int16_t kPlugInDialogDisplay = 1;
constexpr int16_t kPlugInDialogSilent = 2;

// PIDescriptorParameters::recordInfo: whether the recorded script needs the dialog when it is played.
constexpr int16_t kPlugInDialogOptional = 0;

constexpr DescriptorTypeID kTypeInteger = FourCharCode("long");

// PSPixelMask::maskDescription.
constexpr int32_t kSimplePSMask = 0;  // full value shows the pixel
constexpr int32_t kInvertPSMask = 4;  // full value hides the pixel

// ---- Preview maps ----

#pragma pack(push, 8)

// A mask of the same depth as its map.
struct PSPixelMask {
    const PSPixelMask* next;  // null ends the list
    const void* maskData;
    int32_t rowBytes;
    int32_t colBytes;
    int32_t maskDescription;
};

// Pixels to be drawn. Data is addressed from bounds.top, bounds.left; the three steps are in bytes.
struct PSPixelMap {
    int32_t version;  // 1: the host reads nothing from pixelOverlays on
    VRect bounds;
    int32_t imageMode;
    int32_t rowBytes;
    int32_t colBytes;
    int32_t planeBytes;
    const void* baseAddr;
    const PSPixelMask* mat;  // null for none
    const PSPixelMask* masks;
    int32_t maskPhaseRow;
    int32_t maskPhaseCol;
    const void* pixelOverlays;        // from version 2 on
    uint32_t colorManagementOptions;  // from version 2 on
    int16_t depth;                    // bits per sample, from version 3 on; 8 before
};

// ---- Callbacks ----

// Draws the part `source` of the map, with its top left corner at the given place of the device context.
using DisplayPixelsProc = OSErr (*)(const PSPixelMap* map, const VRect* source, int32_t dstRow, int32_t dstCol,
                                    void* platformContext);
using TestAbortProc = Boolean (*)();  // true: the user wants to stop
using ProgressProc = void (*)(int32_t done, int32_t total);
using HostProc = void (*)(int16_t selector, intptr_t* data);
using ProcessEventProc = void (*)(void* event);  // a MSG
// Commits the output buffer, then delivers the areas that the record requests. May move inData and outData and change
// their row bytes. Returns kUserCanceledErr if the user stopped. After a failure, don't call it again in that selector.
using AdvanceStateProc = OSErr (*)();

struct HandleProcs {
    int16_t handleProcsVersion;
    int16_t numHandleProcs;
    Handle (*newProc)(int32_t size);  // null on failure; the contents are undefined
    void (*disposeProc)(Handle handle);
    int32_t (*getSizeProc)(Handle handle);
    OSErr (*setSizeProc)(Handle handle, int32_t size);
    Ptr (*lockProc)(Handle handle, Boolean moveHigh);  // null on failure
    void (*unlockProc)(Handle handle);                 // harmless if nothing is locked
    void (*recoverSpaceProc)(int32_t size);
    void (*disposeRegularHandleProc)(Handle handle);
};

// Older hosts count 5 routines and end the table with spaceProc.
struct BufferProcs {
    int16_t bufferProcsVersion;
    int16_t numBufferProcs;
    OSErr (*allocateProc)(int32_t size, BufferID* buffer);  // on failure the id may be null or as it was
    Ptr (*lockProc)(BufferID buffer, Boolean moveHigh);     // null on failure
    void (*unlockProc)(BufferID buffer);
    void (*freeProc)(BufferID buffer);
    int32_t (*spaceProc)();
    OSErr (*reserveProc)(int32_t size);
    OSErr (*allocateProc64)(int64_t size, BufferID* buffer);
    int64_t (*spaceProc64)();
};

// ---- Script descriptors ----

struct ReadDescriptorProcs {
    int16_t readDescriptorProcsVersion;
    int16_t numReadDescriptorProcs;
    // `keys` ends with a zero word. The host overwrites each entry when it finds that key, so that the remaining
    // entries are the missing keys. The list must be writable, and each reading needs a fresh one. Null on failure.
    PIReadDescriptor (*openReadDescriptorProc)(PIDescriptorHandle descriptor, DescriptorKeyID* keys);
    OSErr (*closeReadDescriptorProc)(PIReadDescriptor token);  // the worst error of the reading
    Boolean (*getKeyProc)(PIReadDescriptor token, DescriptorKeyID* key, DescriptorTypeID* type, int32_t* flags);
    OSErr (*getIntegerProc)(PIReadDescriptor token, int32_t* value);  // of the key that getKeyProc returned last
    UnusedSlot getFloatProc;
    UnusedSlot getUnitFloatProc;
    UnusedSlot getBooleanProc;
    UnusedSlot getTextProc;
    UnusedSlot getAliasProc;
    UnusedSlot getEnumeratedProc;
    UnusedSlot getClassProc;
    UnusedSlot getSimpleReferenceProc;
    UnusedSlot getObjectProc;
    UnusedSlot getCountProc;
    UnusedSlot getStringProc;
    UnusedSlot getPinnedIntegerProc;
    UnusedSlot getPinnedFloatProc;
    UnusedSlot getPinnedUnitFloatProc;
};

struct WriteDescriptorProcs {
    int16_t writeDescriptorProcsVersion;
    int16_t numWriteDescriptorProcs;
    PIWriteDescriptor (*openWriteDescriptorProc)();  // null on failure
    OSErr (*closeWriteDescriptorProc)(PIWriteDescriptor token, PIDescriptorHandle* descriptor);
    OSErr (*putIntegerProc)(PIWriteDescriptor token, DescriptorKeyID key, int32_t value);
    UnusedSlot putFloatProc;
    UnusedSlot putUnitFloatProc;
    UnusedSlot putBooleanProc;
    UnusedSlot putTextProc;
    UnusedSlot putAliasProc;
    UnusedSlot putEnumeratedProc;
    UnusedSlot putClassProc;
    UnusedSlot putSimpleReferenceProc;
    UnusedSlot putObjectProc;
    UnusedSlot putCountProc;
    UnusedSlot putStringProc;
    UnusedSlot putScopedClassProc;
    UnusedSlot putScopedObjectProc;
};

// A script's values come in through `descriptor` and belong to the plug-in from then on: it disposes of the handle and
// sets the field to null. The values to be recorded go out through the same field; the host takes that handle after
// Finish.
struct PIDescriptorParameters {
    int16_t descriptorParametersVersion;
    int16_t playInfo;
    int16_t recordInfo;
    PIDescriptorHandle descriptor;
    const WriteDescriptorProcs* writeDescriptorProcs;
    const ReadDescriptorProcs* readDescriptorProcs;
};

// ---- Suites ----

struct SPBasicSuite {
    // On failure, *suite may be unchanged.
    SPErr (*AcquireSuite)(const char* name, int32_t version, const void** suite);
    SPErr (*ReleaseSuite)(const char* name, int32_t version);
    SPBoolean (*IsEqual)(const char* first, const char* second);
    SPErr (*AllocateBlock)(size_t size, void** block);
    SPErr (*FreeBlock)(void* block);
    SPErr (*ReallocateBlock)(void* block, size_t newSize, void** newBlock);
    SPErr (*Undefined)();
};

constexpr char kDescriptorRegistrySuite[] = "61e608b0-40fd-11d1-8da3-00c04fd5f7ee";
constexpr int32_t kDescriptorRegistrySuiteVersion = 1;

struct PSDescriptorRegistryProcs {
    // Copies the descriptor; the caller still frees its own. A persistent one outlives the host's own run.
    OSErr (*Register)(const char* key, PIActionDescriptor descriptor, Boolean isPersistent);
    OSErr (*Erase)(const char* key);
    OSErr (*Get)(const char* key, PIActionDescriptor* descriptor);  // the caller's copy; 0 and null when none is stored
};

constexpr char kActionDescriptorSuite[] = "df135115-c769-11d0-8079-00c04fd7ec47";
constexpr int32_t kActionDescriptorSuiteVersion = 3;

struct PSActionDescriptorProcs {
    OSErr (*Make)(PIActionDescriptor* descriptor);
    OSErr (*Free)(PIActionDescriptor descriptor);
    UnusedSlot GetType;
    UnusedSlot GetKey;
    OSErr (*HasKey)(PIActionDescriptor descriptor, DescriptorKeyID key, Boolean* hasKey);
    OSErr (*GetCount)(PIActionDescriptor descriptor, uint32_t* count);
    UnusedSlot IsEqual, Erase, Clear;
    OSErr (*PutInteger)(PIActionDescriptor descriptor, DescriptorKeyID key, int32_t value);
    UnusedSlot PutFloat, PutUnitFloat, PutString, PutBoolean, PutList, PutObject;
    UnusedSlot PutGlobalObject, PutEnumerated, PutReference, PutClass, PutGlobalClass, PutAlias;
    OSErr (*GetInteger)(PIActionDescriptor descriptor, DescriptorKeyID key, int32_t* value);  // fails on an absent key
    UnusedSlot GetFloat, GetUnitFloat, GetStringLength, GetString, GetBoolean, GetList;
    UnusedSlot GetObjectValue;  // the host's GetObject, which the Windows headers have as a macro
    UnusedSlot GetGlobalObject, GetEnumerated, GetReference, GetClass, GetGlobalClass, GetAlias;
    UnusedSlot HasKeys, PutIntegers, GetIntegers, AsHandle, HandleToDescriptor;
    UnusedSlot PutZString, GetZString, PutData, GetDataLength, GetData;
    UnusedSlot PutInteger64, GetInteger64;  // new in version 3
};

constexpr char kUIHooksSuite[] = "Photoshop UIHooks Suite for Plug-ins";
constexpr int32_t kUIHooksSuiteVersion = 1;

struct PSUIHooksSuite1 {
    ProcessEventProc processEvent;
    DisplayPixelsProc displayPixels;
    ProgressProc progressBar;
    TestAbortProc testAbort;
    intptr_t (*MainAppWindow)();           // a window handle
    SPErr (*SetCursor)(const char* name);  // null for no cursor; kSPUnknownCursor for a name that the host lacks
    uint32_t (*TickCount)();               // sixtieths of a second
    SPErr (*GetPluginName)(void* plugInRef, void* name);
};

constexpr char kCursorArrow[] = "Photoshop Cursor Arrow";
constexpr char kCursorHand[] = "Photoshop Cursor Hand";

// ---- Records ----

struct PlatformData {
    intptr_t hwnd;  // the host's window, parent of dialogs
};

// The record of kFilterSelectorAbout.
struct AboutRecord {
    PlatformData* platformData;  // may be null
    SPBasicSuite* sSPBasic;      // null in hosts without suites
    void* plugInRef;
    uint8_t reserved[244];
};

#pragma pack(pop)

#pragma pack(push, 4)
#if defined(_MSC_VER)
#pragma warning(push)
#pragma warning(disable : 4121)  // offsets depend on the packing, on purpose
#endif

// The 32-bit form of the record's coordinates, for images beyond 32767 pixels. The host fills in both forms and reads
// the one that the plug-in has selected.
struct BigDocumentStruct {
    int32_t PluginUsing32BitCoordinates;  // 0 at the start of each run; the plug-in sets it to 1
    VPoint imageSize32;
    VRect filterRect32;
    VRect inRect32;
    VRect outRect32;
    VRect maskRect32;
    VPoint floatCoord32;
    VPoint wholeSize32;
};

// Fields without a comment only keep the others at their offsets.
struct FilterRecord {
    int32_t serialNumber;
    TestAbortProc abortProc;
    ProgressProc progressProc;
    Handle parameters;  // the plug-in's; the host keeps it between calls and between runs
    Point imageSize;    // pixels
    int16_t planes;     // of the image, transparency included
    Rect filterRect;    // bounds of the selection, or the whole image
    uint16_t background[3];
    uint16_t foreground[3];
    int32_t maxSpace;     // bytes that the plug-in requests
    int32_t bufferSpace;  // bytes that the plug-in allocates outside the buffer callbacks
    Rect inRect;          // requested input; empty for none
    int16_t inLoPlane;    // first and last requested plane, inclusive
    int16_t inHiPlane;
    Rect outRect;  // requested output; empty for none
    int16_t outLoPlane;
    int16_t outHiPlane;
    void* inData;         // pixel (left, top) of inRect; valid until the next advance or the selector's return
    int32_t inRowBytes;   // may exceed what a row needs
    void* outData;        // holds a copy of the source on delivery
    int32_t outRowBytes;  // may exceed what a row needs
    Boolean isFloating;   // a floating selection, with its mask in maskData
    Boolean haveMask;
    Boolean autoMask;  // the host limits the result to the selection
    Rect maskRect;
    void* maskData;
    int32_t maskRowBytes;
    uint8_t backColor[4];
    uint8_t foreColor[4];
    uint32_t hostSig;  // the host's code
    HostProc hostProc;
    int16_t imageMode;
    Fixed imageHRes;  // pixels per inch
    Fixed imageVRes;
    Point floatCoord;
    Point wholeSize;
    Fixed monitor[10];  // gamma, red x y, green x y, blue x y, white x y, ambient
    PlatformData* platformData;
    BufferProcs* bufferProcs;
    void* resourceProcs;
    ProcessEventProc processEvent;
    DisplayPixelsProc displayPixels;
    HandleProcs* handleProcs;
    Boolean supportsDummyChannels;
    Boolean supportsAlternateLayouts;
    int16_t wantLayout;
    int16_t filterCase;
    int16_t dummyPlaneValue;
    void* premiereHook;
    AdvanceStateProc advanceState;
    Boolean supportsAbsolute;
    Boolean wantsAbsolute;
    UnusedSlot getPropertyObsolete;
    Boolean cannotUndo;
    Boolean supportsPadding;
    int16_t inputPadding;
    int16_t outputPadding;
    int16_t maskPadding;
    int8_t samplingSupport;
    uint8_t reservedByte;
    Fixed inputRate;
    Fixed maskRate;
    UnusedSlot colorServices;
    int16_t inLayerPlanes;       // colour planes of a layer; 0 in a document without layers
    int16_t inTransparencyMask;  // 1 if the layer has transparency
    int16_t inLayerMasks;
    int16_t inInvertedLayerMasks;
    int16_t inNonLayerPlanes;  // planes of a document without layers
    int16_t outLayerPlanes;
    int16_t outTransparencyMask;
    int16_t outLayerMasks;
    int16_t outInvertedLayerMasks;
    int16_t outNonLayerPlanes;
    int16_t absLayerPlanes;
    int16_t absTransparencyMask;
    int16_t absLayerMasks;
    int16_t absInvertedLayerMasks;
    int16_t absNonLayerPlanes;
    int16_t inPreDummyPlanes;
    int16_t inPostDummyPlanes;
    int16_t outPreDummyPlanes;
    int16_t outPostDummyPlanes;
    int32_t inColumnBytes;
    int32_t inPlaneBytes;
    int32_t outColumnBytes;
    int32_t outPlaneBytes;
    void* imageServicesProcs;
    void* propertyProcs;
    int16_t inTileHeight;
    int16_t inTileWidth;
    Point inTileOrigin;
    int16_t absTileHeight;
    int16_t absTileWidth;
    Point absTileOrigin;
    int16_t outTileHeight;
    int16_t outTileWidth;
    Point outTileOrigin;
    int16_t maskTileHeight;
    int16_t maskTileWidth;
    Point maskTileOrigin;
    PIDescriptorParameters* descriptorParameters;  // null in hosts without scripting
    Str255* errorString;
    void* channelPortProcs;
    void* documentInfo;
    SPBasicSuite* sSPBasic;  // null in hosts without suites
    void* plugInRef;
    int32_t depth;  // bits per sample: 1, 8, 16 (0..32768) or 32 (float, white is 1.0)
    Handle iCCprofileData;
    int32_t iCCprofileSize;
    int32_t canUseICCProfiles;
    int32_t hasImageScrap;
    BigDocumentStruct* bigDocumentData;  // null in older hosts
    void* input3DScene;
    void* output3DScene;
    Boolean createNewLayer;
    Handle iCCWorkingProfileData;
    int32_t iCCWorkingProfileSize;
    int64_t bufferSpace64;
    int64_t maxSpace64;
    uint8_t reserved[46];  // zeros; newer hosts add fields here
};

#if defined(_MSC_VER)
#pragma warning(pop)
#endif
#pragma pack(pop)

// `record` is an AboutRecord for kFilterSelectorAbout and a FilterRecord otherwise. The host keeps the word at `data`
// between calls and never reads it; *result is 0 on entry.
using PluginMainProc = void (*)(int16_t selector, void* record, intptr_t* data, int16_t* result);

// ---- Offsets ----

static_assert(sizeof(FilterRecord) == 608 && alignof(FilterRecord) == 4);
STAIRMELT_FIELD_AT(FilterRecord, abortProc, 4);
STAIRMELT_FIELD_AT(FilterRecord, progressProc, 12);
STAIRMELT_FIELD_AT(FilterRecord, parameters, 20);
STAIRMELT_FIELD_AT(FilterRecord, imageSize, 28);
STAIRMELT_FIELD_AT(FilterRecord, planes, 32);
STAIRMELT_FIELD_AT(FilterRecord, filterRect, 34);
STAIRMELT_FIELD_AT(FilterRecord, maxSpace, 56);
STAIRMELT_FIELD_AT(FilterRecord, bufferSpace, 60);
STAIRMELT_FIELD_AT(FilterRecord, inRect, 64);
STAIRMELT_FIELD_AT(FilterRecord, inLoPlane, 72);
STAIRMELT_FIELD_AT(FilterRecord, inHiPlane, 74);
STAIRMELT_FIELD_AT(FilterRecord, outRect, 76);
STAIRMELT_FIELD_AT(FilterRecord, outLoPlane, 84);
STAIRMELT_FIELD_AT(FilterRecord, outHiPlane, 86);
STAIRMELT_FIELD_AT(FilterRecord, inData, 88);
STAIRMELT_FIELD_AT(FilterRecord, inRowBytes, 96);
STAIRMELT_FIELD_AT(FilterRecord, outData, 100);
STAIRMELT_FIELD_AT(FilterRecord, outRowBytes, 108);
STAIRMELT_FIELD_AT(FilterRecord, isFloating, 112);
STAIRMELT_FIELD_AT(FilterRecord, autoMask, 114);
STAIRMELT_FIELD_AT(FilterRecord, maskRect, 116);
STAIRMELT_FIELD_AT(FilterRecord, maskData, 124);
STAIRMELT_FIELD_AT(FilterRecord, maskRowBytes, 132);
STAIRMELT_FIELD_AT(FilterRecord, hostSig, 144);
STAIRMELT_FIELD_AT(FilterRecord, imageMode, 156);
STAIRMELT_FIELD_AT(FilterRecord, monitor, 176);
STAIRMELT_FIELD_AT(FilterRecord, platformData, 216);
STAIRMELT_FIELD_AT(FilterRecord, bufferProcs, 224);
STAIRMELT_FIELD_AT(FilterRecord, displayPixels, 248);
STAIRMELT_FIELD_AT(FilterRecord, handleProcs, 256);
STAIRMELT_FIELD_AT(FilterRecord, filterCase, 268);
STAIRMELT_FIELD_AT(FilterRecord, advanceState, 280);
STAIRMELT_FIELD_AT(FilterRecord, inputPadding, 302);
STAIRMELT_FIELD_AT(FilterRecord, colorServices, 320);
STAIRMELT_FIELD_AT(FilterRecord, inLayerPlanes, 328);
STAIRMELT_FIELD_AT(FilterRecord, inTransparencyMask, 330);
STAIRMELT_FIELD_AT(FilterRecord, inNonLayerPlanes, 336);
STAIRMELT_FIELD_AT(FilterRecord, inColumnBytes, 368);
STAIRMELT_FIELD_AT(FilterRecord, inTileHeight, 400);
STAIRMELT_FIELD_AT(FilterRecord, descriptorParameters, 432);
STAIRMELT_FIELD_AT(FilterRecord, sSPBasic, 464);
STAIRMELT_FIELD_AT(FilterRecord, depth, 480);
STAIRMELT_FIELD_AT(FilterRecord, bigDocumentData, 504);
STAIRMELT_FIELD_AT(FilterRecord, createNewLayer, 528);
STAIRMELT_FIELD_AT(FilterRecord, maxSpace64, 552);
STAIRMELT_FIELD_AT(FilterRecord, reserved, 560);

static_assert(sizeof(BigDocumentStruct) == 92);
STAIRMELT_FIELD_AT(BigDocumentStruct, imageSize32, 4);
STAIRMELT_FIELD_AT(BigDocumentStruct, filterRect32, 12);
STAIRMELT_FIELD_AT(BigDocumentStruct, inRect32, 28);
STAIRMELT_FIELD_AT(BigDocumentStruct, outRect32, 44);
STAIRMELT_FIELD_AT(BigDocumentStruct, maskRect32, 60);
STAIRMELT_FIELD_AT(BigDocumentStruct, wholeSize32, 84);

static_assert(sizeof(AboutRecord) == 272 && sizeof(PlatformData) == 8);
STAIRMELT_FIELD_AT(AboutRecord, platformData, 0);
STAIRMELT_FIELD_AT(AboutRecord, sSPBasic, 8);

static_assert(sizeof(HandleProcs) == 72);
STAIRMELT_FIELD_AT(HandleProcs, newProc, 8);
STAIRMELT_FIELD_AT(HandleProcs, disposeProc, 16);
STAIRMELT_FIELD_AT(HandleProcs, lockProc, 40);
STAIRMELT_FIELD_AT(HandleProcs, unlockProc, 48);

static_assert(sizeof(BufferProcs) == 72);
STAIRMELT_FIELD_AT(BufferProcs, allocateProc, 8);
STAIRMELT_FIELD_AT(BufferProcs, lockProc, 16);
STAIRMELT_FIELD_AT(BufferProcs, unlockProc, 24);
STAIRMELT_FIELD_AT(BufferProcs, freeProc, 32);

static_assert(sizeof(PIDescriptorParameters) == 32);
STAIRMELT_FIELD_AT(PIDescriptorParameters, playInfo, 2);
STAIRMELT_FIELD_AT(PIDescriptorParameters, recordInfo, 4);
STAIRMELT_FIELD_AT(PIDescriptorParameters, descriptor, 8);
STAIRMELT_FIELD_AT(PIDescriptorParameters, writeDescriptorProcs, 16);
STAIRMELT_FIELD_AT(PIDescriptorParameters, readDescriptorProcs, 24);

static_assert(sizeof(ReadDescriptorProcs) == 152);
STAIRMELT_FIELD_AT(ReadDescriptorProcs, openReadDescriptorProc, 8);
STAIRMELT_FIELD_AT(ReadDescriptorProcs, closeReadDescriptorProc, 16);
STAIRMELT_FIELD_AT(ReadDescriptorProcs, getKeyProc, 24);
STAIRMELT_FIELD_AT(ReadDescriptorProcs, getIntegerProc, 32);

static_assert(sizeof(WriteDescriptorProcs) == 136);
STAIRMELT_FIELD_AT(WriteDescriptorProcs, openWriteDescriptorProc, 8);
STAIRMELT_FIELD_AT(WriteDescriptorProcs, closeWriteDescriptorProc, 16);
STAIRMELT_FIELD_AT(WriteDescriptorProcs, putIntegerProc, 24);

static_assert(sizeof(SPBasicSuite) == 56 && sizeof(PSDescriptorRegistryProcs) == 3 * 8);
STAIRMELT_FIELD_AT(SPBasicSuite, ReleaseSuite, 8);
STAIRMELT_FIELD_AT(PSDescriptorRegistryProcs, Get, 16);

static_assert(sizeof(PSActionDescriptorProcs) == 48 * 8);
STAIRMELT_FIELD_AT(PSActionDescriptorProcs, Free, 1 * 8);
STAIRMELT_FIELD_AT(PSActionDescriptorProcs, HasKey, 4 * 8);
STAIRMELT_FIELD_AT(PSActionDescriptorProcs, GetCount, 5 * 8);
STAIRMELT_FIELD_AT(PSActionDescriptorProcs, PutInteger, 9 * 8);
STAIRMELT_FIELD_AT(PSActionDescriptorProcs, GetInteger, 22 * 8);

static_assert(sizeof(PSUIHooksSuite1) == 64);
STAIRMELT_FIELD_AT(PSUIHooksSuite1, displayPixels, 8);
STAIRMELT_FIELD_AT(PSUIHooksSuite1, SetCursor, 40);

static_assert(sizeof(PSPixelMap) == 88 && sizeof(PSPixelMask) == 32);
STAIRMELT_FIELD_AT(PSPixelMap, bounds, 4);
STAIRMELT_FIELD_AT(PSPixelMap, imageMode, 20);
STAIRMELT_FIELD_AT(PSPixelMap, rowBytes, 24);
STAIRMELT_FIELD_AT(PSPixelMap, planeBytes, 32);
STAIRMELT_FIELD_AT(PSPixelMap, baseAddr, 40);
STAIRMELT_FIELD_AT(PSPixelMap, mat, 48);
STAIRMELT_FIELD_AT(PSPixelMap, masks, 56);
STAIRMELT_FIELD_AT(PSPixelMap, maskPhaseRow, 64);
STAIRMELT_FIELD_AT(PSPixelMap, pixelOverlays, 72);
STAIRMELT_FIELD_AT(PSPixelMap, depth, 84);
STAIRMELT_FIELD_AT(PSPixelMask, maskData, 8);
STAIRMELT_FIELD_AT(PSPixelMask, rowBytes, 16);
STAIRMELT_FIELD_AT(PSPixelMask, maskDescription, 24);

#undef STAIRMELT_FIELD_AT

}  // namespace stairmelt
