#pragma once

/// Takes from this process, for good, what playing a file never needs: other
/// programs, the network, changing files, and more memory than its share. Sound
/// goes over sockets of this machine. False where the kernel refuses.
bool limitPlayer();
