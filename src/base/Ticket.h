#pragma once

#include <memory>

/// Ends a subscription, or cancels a call that has not come yet, when dropped.
using Ticket = std::shared_ptr<const void>;
