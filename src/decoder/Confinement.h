#pragma once

/// Takes from this process, for good, what decoding never needs: other programs,
/// the network, writing, and more memory than its share. False where the kernel
/// refuses, and nothing may be decoded then.
bool confine();
