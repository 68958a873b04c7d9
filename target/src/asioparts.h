// Standalone Asio, as all of the library uses it.
#pragma once

#ifndef ASIO_STANDALONE
#define ASIO_STANDALONE
#endif
#define ASIO_NO_DEPRECATED

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/read.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#pragma GCC diagnostic pop
