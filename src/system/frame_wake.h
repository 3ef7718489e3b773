#pragma once

// Lets other threads end the frame loop's wait as soon as they have something to show. Any thread.

// Replaces the function that ends the wait; it may be called on any thread. Null: wakeFrame does nothing. Set null before
// the window system ends: when this returns, no thread is in the old function.
void setFrameWake(void (*wake)());

void wakeFrame();
