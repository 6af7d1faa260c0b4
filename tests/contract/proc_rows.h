// Every proc that the library publishes, written out once more by hand: clients built long ago ask
// for exactly these names, whatever the headers of today say. Rows are only ever added.
#ifndef ZEB_TESTS_CONTRACT_PROC_ROWS_H
#define ZEB_TESTS_CONTRACT_PROC_ROWS_H

#include <ostream>

namespace contract {

struct ProcRow {
  const char* interfaceName;
  const char* methodName;
  const char* procName;
};

inline void PrintTo(const ProcRow& row, std::ostream* out) {
  *out << row.interfaceName << "/" << row.methodName << "/" << row.procName;
}

inline constexpr ProcRow kProcRows[] = {
    {"ZEB", "ZEBRegisterProcAddress", "ZEBRegisterProcAddress"},
    {"ZEB", "ZEBReportError", "ZEBReportError"},
    {"ZEB", "ZEBUnregisterInterface", "ZEBUnregisterInterface"},
    {"ZEB", "ZEBGetUnregisterCount", "ZEBGetUnregisterCount"},
    {"ZEB", "ZEBGetUnregisterCountAddr", "ZEBGetUnregisterCountAddr"},
    {"ZEB", "ZEBAssertNoObjects", "ZEBAssertNoObjects"},
    {"ZEB", "ZEBIsMultiThreaded", "ZEBIsMultiThreaded"},

    {"ZEBMemoryInterface", "Alloc", "ZEBMemAllocProc"},
    {"ZEBMemoryInterface", "Realloc", "ZEBMemReallocProc"},
    {"ZEBMemoryInterface", "Free", "ZEBMemFreeProc"},
    {"ZEBMemoryInterface", "GetBlockSize", "ZEBMemGetBlockSizeProc"},

    {"ZEBMemDbgInterface", "StartWatch", "ZEBMemDbgStartWatchProc"},
    {"ZEBMemDbgInterface", "StopWatch", "ZEBMemDbgStopWatchProc"},
    {"ZEBMemDbgInterface", "VerifyHeap", "ZEBMemDbgVerifyHeapProc"},
    {"ZEBMemDbgInterface", "ReportStats", "ZEBMemDbgReportStatsProc"},
    {"ZEBMemDbgInterface", "SetFailureRate", "ZEBMemDbgSetFailureRateProc"},
    {"ZEBMemDbgInterface", "GetCurAlloc", "ZEBMemDbgGetCurAllocProc"},
    {"ZEBMemDbgInterface", "GetHighWaterAlloc", "ZEBMemDbgGetHighWaterAllocProc"},
    {"ZEBMemDbgInterface", "GetNumAllocs", "ZEBMemDbgGetNumAllocsProc"},

    {"ZEBErrorInterface", "NewError", "ZEBNewErrorProc"},
    {"ZEBErrorInterface", "GetCoreError", "ZEBGetCoreErrorProc"},
    {"ZEBErrorInterface", "AddRef", "ZEBErrorAddRefProcV2"},
    {"ZEBErrorInterface", "AddRef", "ZEBErrorAddRefProc"},
    {"ZEBErrorInterface", "Release", "ZEBErrorReleaseProc"},
    {"ZEBErrorInterface", "GetErrorMessage", "ZEBErrorGetMessageProc"},
    {"ZEBErrorInterface", "GetComponent", "ZEBErrorGetComponentProc"},
    {"ZEBErrorInterface", "GetID", "ZEBErrorGetIDProc"},
    {"ZEBErrorInterface", "GetErrorInfo", "ZEBGetErrorInfoProc"},

    {"ZEBStringInterface", "NewStringAtom", "ZEBNewStringAtomProc"},
    {"ZEBStringInterface", "DeleteStringAtom", "ZEBDeleteStringAtomProc"},
    {"ZEBStringInterface", "GetCString", "ZEBGetCStringProc"},
    {"ZEBStringInterface", "AddRef", "ZEBAddRefStringAtomProc"},

    {"ZEBEventInterface", "NewEventCounter", "ZEBNewEventCounterProc"},
    {"ZEBEventInterface", "DeleteEventCounter", "ZEBDeleteEventCounterProc"},
    {"ZEBEventInterface", "SignalEventCounter", "ZEBSignalEventCounterProc"},
    {"ZEBEventInterface", "NewEventSnapshot", "ZEBNewEventSnapshotProc"},
    {"ZEBEventInterface", "DeleteEventSnapshot", "ZEBDeleteEventSnapshotProc"},

    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerV5Proc"},
    {"ZEBContainerInterface", "NewContainer", "ZEBNewContainerV2Proc"},
    {"ZEBContainerInterface", "CloneContainer", "ZEBCloneContainerProc"},
    {"ZEBContainerInterface", "AddRef", "ZEBAddRefContainerV2Proc"},
    {"ZEBContainerInterface", "Release", "ZEBReleaseContainerProc"},
    {"ZEBContainerInterface", "DecrementWithoutDelete", "ZEBDecrementWithoutDeleteProc"},
    {"ZEBContainerInterface", "DeleteUnownedContainer", "ZEBDeleteUnownedContainerProc"},
    {"ZEBContainerInterface", "RegisterInterface", "ZEBRegisterInterfaceV2Proc"},
    {"ZEBContainerInterface", "RegisterInstance", "ZEBRegisterInstanceV2Proc"},
    {"ZEBContainerInterface", "GetMethod", "ZEBGetMethodV3Proc"},
    {"ZEBContainerInterface", "GetParentMethod", "ZEBGetParentMethodV2Proc"},
    {"ZEBContainerInterface", "GetInstance", "ZEBGetInstanceProc"},
    {"ZEBContainerInterface", "NGetInstance", "ZEBNGetInstanceProc"},
    {"ZEBContainerInterface", "GetSignature", "ZEBGetSignatureProc"},
    {"ZEBContainerInterface", "DebugGetRefCountAddr", "ZEBGetRefCountAddrProc"},
    {"ZEBContainerInterface", "GetOffsetToPrimaryInstance", "ZEBGetOffsetToPrimaryInstProc"},
    {"ZEBContainerInterface", "NewContainer", "ZEBNewContainerProc"},
    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerProc"},
    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerV2Proc"},
    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerV3Proc"},
    {"ZEBContainerInterface", "NewFullContainer", "ZEBNewFullContainerV4Proc"},
    {"ZEBContainerInterface", "RegisterInterface", "ZEBRegisterInterfaceProc"},
    {"ZEBContainerInterface", "RegisterInstance", "ZEBRegisterInstanceProc"},
    {"ZEBContainerInterface", "GetMethod", "ZEBGetMethodProc"},
    {"ZEBContainerInterface", "GetMethod", "ZEBGetMethodV2Proc"},
    {"ZEBContainerInterface", "GetParentMethod", "ZEBGetParentMethodProc"},

    {"ZEBSharedBuffInterface", "NewBuffer", "ZEBSharedBuffNewBufferV3Proc"},
    {"ZEBSharedBuffInterface", "DeleteUnowned", "ZEBSharedBuffDelUnownedProc"},
    {"ZEBSharedBuffInterface", "AddRef", "ZEBSharedBuffAddRefProc"},
    {"ZEBSharedBuffInterface", "Release", "ZEBSharedBuffReleaseProc"},
    {"ZEBSharedBuffInterface", "GetBuffer", "ZEBSharedBuffGetBufferProc"},
    {"ZEBSharedBuffInterface", "GetSize", "ZEBSharedBuffGetSizeProc"},
    {"ZEBSharedBuffInterface", "NewBuffer", "ZEBSharedBuffNewBufferV2Proc"},

    {"ZEBProgressInterface", "NewNullProgress", "ZEBProgressNewNullProgressProc"},
    {"ZEBProgressInterface", "NewClientProgress", "ZEBProgressNewClientProgressProc"},
    {"ZEBProgressInterface", "AddRef", "ZEBProgressAddRefProc"},
    {"ZEBProgressInterface", "Release", "ZEBProgressReleaseProc"},
    {"ZEBProgressInterface", "Update", "ZEBProgressUpdateProc"},

    {"ZEBFilterInterface", "NewNullDataSink", "ZEBFilterNewNullDataSinkV2Proc"},
    {"ZEBFilterInterface", "NewClientDataSink", "ZEBFilterNewClientDataSinkV2Proc"},
    {"ZEBFilterInterface", "NewIdentityFilter", "ZEBFilterNewIdentityFilterV2Proc"},
    {"ZEBFilterInterface", "NewClientFilter", "ZEBFilterNewClientFilterV2Proc"},
    {"ZEBFilterInterface", "NewFilterJPEG", "ZEBFilterNewFilterJPEGV2Proc"},
    {"ZEBFilterInterface", "AddRef", "ZEBFilterAddRefV2Proc"},
    {"ZEBFilterInterface", "Release", "ZEBFilterReleaseProc"},
    {"ZEBFilterInterface", "Write", "ZEBFilterWriteV2Proc"},
    {"ZEBFilterInterface", "IsFilter", "ZEBFilterIsFilterProc"},
    {"ZEBFilterInterface", "Close", "ZEBFilterCloseProc"},
    {"ZEBFilterInterface", "GetPostScriptFilter", "ZEBFilterGetPostScriptFilterProc"},
    {"ZEBFilterInterface", "SetDataSink", "ZEBFilterSetDataSinkV2Proc"},
    {"ZEBFilterInterface", "PeekTarget", "ZEBFilterPeekTargetProc"},
    {"ZEBFilterInterface", "SetImageParameters", "ZEBFilterJPEGSetImageParametersProc"},
    {"ZEBFilterInterface", "SetCompressionParameters", "ZEBFilterJPEGSetCompressionParametersProc"},
    {"ZEBFilterInterface", "GetChainState", "ZEBFilterGetChainStateV2Proc"},
    {"ZEBFilterInterface", "ResetChainState", "ZEBFilterResetChainStateProc"},
    {"ZEBFilterInterface", "Write", "ZEBFilterWriteProc"},
    {"ZEBFilterInterface", "SetDataSink", "ZEBFilterSetDataSinkProc"},
    {"ZEBFilterInterface", "NewNullDataSink", "ZEBFilterNewNullDataSinkProc"},
    {"ZEBFilterInterface", "NewClientDataSink", "ZEBFilterNewClientDataSinkProc"},
    {"ZEBFilterInterface", "NewIdentityFilter", "ZEBFilterNewIdentityFilterProc"},
    {"ZEBFilterInterface", "NewClientFilter", "ZEBFilterNewClientFilterProc"},
    {"ZEBFilterInterface", "NewFilterJPEG", "ZEBFilterNewFilterJPEGProc"},
    {"ZEBFilterInterface", "GetChainState", "ZEBFilterGetChainStateProc"},
    {"ZEBFilterInterface", "AddRef", "ZEBFilterAddRefProc"},
};

}  // namespace contract

#endif
