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

    {"ZEBStreamFactoryInterface", "NewPositionableMemoryStream",
     "ZEBNewPositionableMemoryStreamProc"},
    {"ZEBStreamFactoryInterface", "NewPositionableBufferStream",
     "ZEBNewPositionableBufferStreamProc"},
    {"ZEBStreamFactoryInterface", "NewPositionableFileStream", "ZEBNewPositionableFileStreamProc"},
    {"ZEBStreamFactoryInterface", "NewClientSimpleStream", "ZEBNewClientSimpleStreamProc"},
    {"ZEBStreamFactoryInterface", "NewClientRewindableStream", "ZEBNewClientRewindableStreamProc"},
    {"ZEBStreamFactoryInterface", "NewClientPositionableStream",
     "ZEBNewClientPositionableStreamProc"},

    {"ZEBSimpleStreamInterface", "Read", "ZEBSimpleStreamReadProc"},
    {"ZEBSimpleStreamInterface", "Write", "ZEBSimpleStreamWriteProc"},

    {"ZEBRewindableStreamInterface", "CreateIndependentlyRewindableStream",
     "ZEBRewindableStreamCreateIndependentlyRewindableStreamProc"},
    {"ZEBRewindableStreamInterface", "Rewind", "ZEBRewindableStreamRewindProc"},

    {"ZEBPositionableStreamInterface", "CreateIndependentlyPositionableStream",
     "ZEBPositionableStreamCreateIndependentlyPositionableStreamProc"},
    {"ZEBPositionableStreamInterface", "Mark", "ZEBPositionableStreamMarkProc"},
    {"ZEBPositionableStreamInterface", "Seek", "ZEBPositionableStreamSeekProc"},
    {"ZEBPositionableStreamInterface", "Flush", "ZEBPositionableStreamFlushProc"},

    {"ZEBNewStreamInterface", "NewMemoryStream", "ZEBNewMemoryStreamProc2"},
    {"ZEBNewStreamInterface", "NewMemoryStream", "ZEBNewMemoryStreamProc3"},
    {"ZEBNewStreamInterface", "NewBufferStream", "ZEBNewBufferStreamProc3"},
    {"ZEBNewStreamInterface", "NewBufferStream", "ZEBNewBufferStreamProc4"},
    {"ZEBNewStreamInterface", "NewFileStream", "ZEBNewFileStreamProc2"},
    {"ZEBNewStreamInterface", "NewFileStream", "ZEBNewFileStreamProc3"},
    {"ZEBNewStreamInterface", "NewExternalStream", "ZEBNewExternalStreamProc3"},
    {"ZEBNewStreamInterface", "NewExternalStream", "ZEBNewExternalStreamProc4"},

    {"ZEBStreamInterface", "Read", "ZEBStreamReadProc2"},
    {"ZEBStreamInterface", "Write", "ZEBStreamWriteProc2"},
    {"ZEBStreamInterface", "Write", "ZEBStreamWriteProc3"},
    {"ZEBStreamInterface", "Seek", "ZEBStreamSeekProc2"},
    {"ZEBStreamInterface", "Seek", "ZEBStreamSeekProc3"},
    {"ZEBStreamInterface", "Mark", "ZEBStreamMarkProc"},

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

    {"ZEBCacheInterface", "NewCacheID", "ZEBCacheNewCacheIDProc"},
    {"ZEBCacheInterface", "AddRef", "ZEBCacheAddRefProc"},
    {"ZEBCacheInterface", "Release", "ZEBCacheReleaseProc"},
    {"ZEBCacheInterface", "Attach", "ZEBCacheAttachProcV2"},
    {"ZEBCacheInterface", "Add", "ZEBCacheAddProc"},
    {"ZEBCacheInterface", "UpdateCost", "ZEBCacheUpdateCostProc"},
    {"ZEBCacheInterface", "ReturnCost", "ZEBCacheReturnCostProc"},
    {"ZEBCacheInterface", "MarkNoPurge", "ZEBCacheMarkNoPurgeProcV2"},
    {"ZEBCacheInterface", "MarkPurge", "ZEBCacheMarkPurgeProc"},
    {"ZEBCacheInterface", "GetCacheTime", "ZEBCacheGetCacheTimeProc"},
    {"ZEBCacheInterface", "CurrentCacheSize", "ZEBCurrentCacheSizeProc"},
    {"ZEBCacheInterface", "NewCachePurge", "ZEBCacheNewCachePurgeProc"},
    {"ZEBCacheInterface", "PurgeNextBlock", "ZEBCachePurgeNextBlockProc"},
    {"ZEBCacheInterface", "DeleteCachePurge", "ZEBCacheDeleteCachePurgeProc"},
    {"ZEBCacheInterface", "PurgeAll", "ZEBCachePurgeAllProc"},
    {"ZEBCacheInterface", "PurgeAllStaticCaches", "ZEBCachePurgeAllStaticCachesProc"},
    {"ZEBCacheInterface", "AddClientPurge", "ZEBCacheAddRemoveClientPurgeProcV2"},
    {"ZEBCacheInterface", "RemoveClientPurge", "ZEBCacheAddRemoveClientPurgeProcV2"},
    {"ZEBCacheInterface", "NewCacheSet", "ZEBCacheNewCacheSetProc"},
    {"ZEBCacheInterface", "AddRefCacheSet", "ZEBCacheAddRefCacheSetProc"},
    {"ZEBCacheInterface", "DeleteCacheSet", "ZEBCacheDeleteCacheSetProc"},
    {"ZEBCacheInterface", "SearchForID", "ZEBCacheSearchForIDProc"},
    {"ZEBCacheInterface", "RemoveID", "ZEBCacheRemoveIDProc"},
    {"ZEBCacheInterface", "RemoveIDs", "ZEBCacheRemoveIDsProc"},
    {"ZEBCacheInterface", "MarkNoPurge", "ZEBCacheMarkNoPurgeProc"},
    {"ZEBCacheInterface", "AddClientPurge", "ZEBCacheAddRemoveClientPurgeProc"},
    {"ZEBCacheInterface", "RemoveClientPurge", "ZEBCacheAddRemoveClientPurgeProc"},
    {"ZEBCacheInterface", "Attach", "ZEBCacheAttachProc"},

    {"ZEBInspectInterface", "NewProcSnapshot", "ZEBInspectNewProcSnapshotProc"},
    {"ZEBInspectInterface", "NewAtomSnapshot", "ZEBInspectNewAtomSnapshotProc"},
    {"ZEBInspectInterface", "NewObjectSnapshot", "ZEBInspectNewObjectSnapshotProc"},
    {"ZEBInspectInterface", "NewLookupExplanation", "ZEBInspectNewLookupExplanationProc"},
    {"ZEBInspectInterface", "DeleteSnapshot", "ZEBInspectDeleteSnapshotProc"},
};

}  // namespace contract

#endif
