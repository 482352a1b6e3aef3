#pragma once

// Lets the calling thread yield to the others on a busy machine, but never starve: events wait for what it does.
void lowerThreadPriority();

// Lets the timed waits of the calling thread end when they should. The kernel would put them off by up to 50
// microseconds, to serve several at once.
void keepTimeExactly();
