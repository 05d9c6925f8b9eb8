/* The protocol of a worker pool, for spin: TWorkItemsQueue with what TWorkerThreadPool and TWorkerThread do around it.
   Adders, workers that come, wait, are told that a minute has passed and go, the event of the last item, and a soft
   termination run against each other in every order. A section under one lock is one atomic step here; what the code
   does behind the lock (setting a signal, looking for another thread) is a step of its own. No wait ends by a time-out,
   so whatever relied on one would show.

   Proved, when nothing moves any more: every item was done or dropped, none waits, and the event came behind the last
   one; on the way: no item is taken, and none runs, while the event runs. */

#ifndef ADDERS
#define ADDERS 2
#endif
#ifndef ADDS
#define ADDS 2 /* items of each adder */
#endif
#ifndef MAX_THREADS
#define MAX_THREADS 2
#endif
#ifndef IDLE_ENDS
#define IDLE_ENDS 1 /* how often a worker that waits is told that its time is over */
#endif
#ifndef ENDS
#define ENDS 1 /* soft terminations */
#endif
#define WORKERS 8 /* ids are used once: a signal that is set for a thread that has gone is lost */
#define NONE 255
#define ITEM 0 /* what a worker found */
#define SEARCH 1
#define NOTHING 2
#define LAST_DONE 3

byte queued, not_done, running, done, dropped, hold;
bool waiting[WORKERS], signal[WORKERS], alive[WORKERS], stop[WORKERS];
byte count, next_id;
byte idle_left = IDLE_ENDS;
bool searching, terminated, announced = true;

/* With the lock held: takes out any of those who wait, if there is something for him that nobody is about to take. */
inline next_waker(w) {
  w = NONE;
  if
  :: queued > 0 && hold == 0 && !searching ->
     if
     :: waiting[0] -> w = 0
     :: waiting[1] -> w = 1
     :: waiting[2] -> w = 2
     :: waiting[3] -> w = 3
     :: waiting[4] -> w = 4
     :: waiting[5] -> w = 5
     :: waiting[6] -> w = 6
     :: waiting[7] -> w = 7
     :: else
     fi;
     if
     :: w != NONE -> waiting[w] = false
     :: else
     fi
  :: else
  fi
}

inline wake(w) {
  if
  :: w != NONE -> signal[w] = true; w = NONE
  :: else
  fi
}

/* Looks without the lock, then with it. Above one thread the processors may refuse. */
inline check_add() {
  if
  :: count < MAX_THREADS ->
     if
     :: queued > 0 && !terminated ->
        atomic {
          if
          :: count < MAX_THREADS && queued > 0 && !terminated ->
             if
             :: assert(next_id < WORKERS); count++; alive[next_id] = true; run Worker(next_id); next_id++
             :: count > 0 -> skip
             fi
          :: else
          fi
        }
     :: else
     fi
  :: else
  fi
}

/* The event of the last item, unless something was added meanwhile, or it runs already: what is added and withdrawn
   while it runs isn't announced again. */
inline all_done(w) {
  atomic {
    if
    :: hold == 0 && not_done == 0 -> hold++; announced = true; begun = true
    :: else ->
       begun = false;
       if
       :: not_done == 0 -> announced = true
       :: else
       fi
    fi
  }
  if
  :: begun ->
     assert(running == 0);
     atomic { hold--; next_waker(w) }
     wake(w)
  :: else
  fi
}

proctype Worker(byte i) {
  byte w = NONE, found = ITEM;
  bool begun, last, zero, carries;
again:
  if
  :: stop[i] && carries ->
     carries = false;
     atomic { done++; not_done--; zero = (not_done == 0) }
     if
     :: zero -> all_done(w)
     :: else
     fi
  :: else
  fi;
  if
  :: stop[i] && !carries -> goto remove
  :: else
  fi;
look:
  atomic {
    if
    :: found == SEARCH -> searching = false
    :: else
    fi;
    zero = false;
    if
    :: carries -> carries = false; done++; not_done--; zero = (not_done == 0)
    :: else
    fi;
    if
    :: zero -> found = LAST_DONE
    :: !zero && (queued == 0 || hold > 0) ->
       if
       :: found == ITEM && !searching -> found = SEARCH; searching = true
       :: else -> found = NOTHING; waiting[i] = true
       fi
    :: else ->
       waiting[i] = false; queued--; found = ITEM; running++;
       assert(hold == 0);
       next_waker(w)
    fi
  }
  if
  :: found == SEARCH -> goto look
  :: found == LAST_DONE ->
     all_done(w);
     found = ITEM;
     goto again
  :: found == NOTHING ->
end_waiting:
     if
     :: signal[i] -> signal[i] = false
     :: atomic { idle_left > 0 -> idle_left--; stop[i] = true }
     fi;
     if
     :: stop[i] -> goto leave
     :: else -> goto again
     fi
  :: else
  fi;
  wake(w);
  check_add();
  assert(hold == 0); /* the work */
  running--;
  carries = true; /* counted by the step that takes the next one, or above by a worker that takes none */
  goto again;
leave:
  atomic { waiting[i] = false; next_waker(w) }
  wake(w);
remove:
  atomic { alive[i] = false; count--; last = (count == 0) }
  if
  :: queued > 0 -> check_add()
  :: else
  fi;
  if
  :: last && count == 0 ->
     atomic { last = terminated; terminated = false }
     if
     :: last && queued > 0 -> check_add()
     :: else
     fi
  :: else
  fi
}

proctype Adder() {
  byte n, w = NONE;
  do
  :: n < ADDS ->
     n++;
     atomic { queued++; not_done++; announced = false; next_waker(w) }
     wake(w);
     check_add()
  :: else -> break
  od
}

inline ask_to_end(w) {
  atomic {
    if
    :: count > 0 ->
       terminated = true;
       for (w : 0 .. WORKERS - 1) {
         if
         :: alive[w] -> stop[w] = true; signal[w] = true
         :: else
         fi
       }
       w = NONE
    :: else
    fi
  }
}

proctype Ender() {
  byte w = NONE, n, ends;
  bool begun, zero;
  do
  :: ends < ENDS ->
     ends++;
     ask_to_end(w);
     atomic { n = queued; queued = 0 }
     atomic { dropped = dropped + n; not_done = not_done - n; zero = (n > 0 && not_done == 0) }
     if
     :: zero -> all_done(w)
     :: else
     fi;
     ask_to_end(w)
  :: else -> break
  od
}

proctype Monitor() {
end_watching:
  timeout ->
  assert(queued == 0 && not_done == 0 && running == 0 && hold == 0);
  assert(done + dropped == ADDERS * ADDS);
  assert(announced)
}

init {
  byte i;
  atomic {
    for (i : 1 .. ADDERS) { run Adder() }
    run Ender();
    run Monitor()
  }
}
