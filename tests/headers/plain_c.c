/* A host in plain C: the whole contract in one include, the library by linking. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "zeb/zeb.h"

/* Not assert, which a release build leaves out. */
static void expect(int right, const char* what) {
  if (right) return;
  fprintf(stderr, "plain C: it is not so that %s\n", what);
  exit(1);
}

static int reports;

static void report(const char* message) {
  ++reports;
  expect(strcmp(message, "from C") == 0, "the message is reported");
}

static int deletions;

static void deleteInfo(void* info) {
  ++deletions;
  expect(info == &deletions, "the info comes back");
}

static int32_t answer(void) { return 42; }

static void useMemory(ZEBGetProcAddress find) {
  ZEBMemoryProcs memory;
  expect(ZEBFetchMemoryProcs(find, &memory), "the memory procs are there");
  void* block = memory.Alloc(100);
  expect(block != NULL && memory.GetBlockSize(block) == 100, "a block is allocated");
  memset(block, 1, 100);
  block = memory.Realloc(block, 200);
  expect(block != NULL && memory.GetBlockSize(block) == 200, "a block is resized");
  memory.Free(block);
}

static void useErrors(ZEBGetProcAddress find) {
  ZEBErrorProcs errors;
  ZEBStringProcs strings;
  expect(ZEBFetchErrorProcs(find, &errors), "the error procs are there");
  expect(ZEBFetchStringProcs(find, &strings), "the string procs are there");
  ZEBErrorObject* error = errors.NewError("from C", "plain C", 7, &deletions, deleteInfo);
  expect(errors.GetID(error) == 7, "an error keeps its id");
  expect(strcmp(strings.GetCString(errors.GetComponent(error)), "plain C") == 0,
         "an error keeps its component");
  errors.Release(error);
  expect(reports == 1 && deletions == 1, "an error is reported once and its info deleted once");
}

static void useRegistry(ZEBGetProcAddress find) {
  ZEBFrameProcs frame;
  expect(ZEBFetchFrameProcs(find, &frame), "the frame's procs are there");
  expect(frame.RegisterProcAddress("Plain C", "Answer", "AnswerProc", (ZEBProc)answer) == 1,
         "a proc is registered");
  int32_t (*found)(void) = (int32_t(*)(void))find("Plain C", "Answer", "AnswerProc");
  expect(found != NULL && found() == 42, "a proc is found");
  frame.UnregisterInterface("Plain C");
  expect(find("Plain C", "Answer", "AnswerProc") == NULL, "an interface is unregistered");
  expect(*frame.GetUnregisterCountAddr() == 8, "the change counter moves");
}

static void useEvents(ZEBGetProcAddress find) {
  ZEBEventProcs events;
  expect(ZEBFetchEventProcs(find, &events), "the event procs are there");
  ZEBEventCounter* counter = events.NewEventCounter("plain C", 1);
  events.SignalEventCounter(counter, 3);
  uint32_t count = 0;
  ZEBEventRecord* records = events.NewEventSnapshot(&count);
  expect(count > 0 && strcmp(records[0].name, "plain C") == 0 && records[0].total == 3,
         "a counter is in the snapshot");
  events.DeleteEventSnapshot(records);
  events.DeleteEventCounter(counter);
}

static uint64_t written;

static ZEBErrorObject* countBytes(void* data, const void* bytes, uint64_t size) {
  expect(data == &written && bytes != NULL, "a client sink gets its data and the bytes");
  written += size;
  return NULL;
}

static void useFilters(ZEBGetProcAddress find) {
  ZEBFilterProcs filters;
  expect(ZEBFetchFilterProcs(find, &filters), "the filter procs are there");
  ZEBDataSink* sink = NULL;
  expect(filters.NewClientDataSink(&sink, &written, countBytes, NULL) == NULL, "a sink is made");
  ZEBDataSink* filter = NULL;
  expect(filters.NewIdentityFilter(&filter, sink) == NULL, "a filter is made");
  expect(filters.AddRef(filter) == NULL, "a filter gets its first reference");
  expect(filters.Write(filter, "bytes", 5) == NULL && written == 5, "bytes pass the filter");
  filters.Release(filter);
}

int main(void) {
  expect(ZEBGetVersion() == ZEB_VERSION, "the version is that of the headers");
  const ZEBGetProcAddress find = ZEBInitialize3(NULL, NULL, NULL, NULL, NULL, NULL, report, 7, 0);
  expect(find != NULL && ZEBGetGetProcAddress() == find, "the library starts");
  useMemory(find);
  useErrors(find);
  useRegistry(find);
  useEvents(find);
  useFilters(find);
  expect(ZEBTerminate() == 8, "the stop answers the change counter");
  expect(ZEBGetGetProcAddress() == NULL, "the library is stopped");
  expect(reports == 1, "the stop reports nothing");
  return 0;
}
