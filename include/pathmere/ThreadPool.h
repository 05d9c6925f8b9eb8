#pragma once

// The pools and their threads.
#include <framework/Thread.h>
#include <threading/KivThread.h>
#include <threading/ThreadPool.h>
#include <threading/WorkItemsQueue.h>
#include <threading/WorkerThread.h>
#include <threading/WorkerThreadPool.h>
