#pragma once

// Lets worker threads end the wait of the frame loop when they have something new to show. Any thread.

// Sets the function that wakeFrame calls. If it is null, wakeFrame does nothing. Set null before the window system
// shuts down: after setFrameWake has returned, no thread runs the old function.
void setFrameWake(void (*wake)());

// Ends the wait of the frame loop, so that it draws a new frame.
void wakeFrame();
