#pragma once

#include <span>

#include <asio/ip/udp.hpp>

namespace mvrtpfec {

/// Throws UsageError when what is sent to one of `targets` would come to one of `sources`, which this host
/// receives on, as far as it can tell.
void requireElsewhere(std::span<const asio::ip::udp::endpoint> targets,
                      std::span<const asio::ip::udp::endpoint> sources);

}  // namespace mvrtpfec
