#pragma once

// Work items, cancellation, futures, and where pools come from.
#include <threading/Cancellation.h>
#include <threading/Future.h>
#include <threading/Interlocked.h>
#include <threading/WorkItem.h>
#include <threading/WorkProcedures.h>
#include <threading/WorkerPool.h>
