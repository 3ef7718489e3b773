#pragma once

// Lets other threads end the wait of the frame loop when they have something new to show. Any thread.

// Sets the function that wakeFrame calls, on any thread. Null: wakeFrame does nothing. Set null before the window
// system shuts down: after this call has returned, no thread runs the old function.
void setFrameWake(void (*wake)());

// Ends the wait, so that the frame loop draws a new frame.
void wakeFrame();
