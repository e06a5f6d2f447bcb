// Loopback servers for the media-source tests, so network streams can be read without a
// network: ListeningSocket holds a TCP port on 127.0.0.1 that accepts connections into its
// backlog but never answers (a dead camera), and TestHttpServer answers every GET with one
// body on a thread of its own, or, as a camera that hangs would, accepts and never answers,
// or sends the headers and the start of the body and then falls silent with the connection
// held open. Neither parses more HTTP than a request line and headers.
#pragma once

#include <atomic>
#include <cstddef>
#include <limits>
#include <string>
#include <thread>
#include <vector>

class ListeningSocket {
 public:
  ListeningSocket();
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  bool IsOpen() const { return m_fd >= 0; }
  int Port() const { return m_port; }
  int Descriptor() const { return m_fd; }

 private:
  int m_fd = -1;
  int m_port = 0;
};

// What TestHttpServer sends on each connection before it closes it or falls silent.
struct HttpReply {
  static constexpr size_t kWholeBody = std::numeric_limits<size_t>::max();
  bool headers = true;            // false: accept, read the request, answer nothing
  size_t bodyBytes = kWholeBody;  // fewer than the body's: send them, then hold the line silent
};

class TestHttpServer {
 public:
  explicit TestHttpServer(std::vector<unsigned char> body, HttpReply reply = HttpReply{});
  ~TestHttpServer();
  TestHttpServer(const TestHttpServer&) = delete;
  TestHttpServer& operator=(const TestHttpServer&) = delete;

  // http://127.0.0.1:<port>/<name>
  std::string Url(const std::string& name) const;

 private:
  void Serve();
  void Answer(int connection) const;
  // Keeps a connection open and silent until the server stops.
  void HoldSilent(int connection) const;

  std::vector<unsigned char> m_body;
  HttpReply m_reply;
  ListeningSocket m_socket;
  std::atomic<bool> m_stop{false};
  std::thread m_thread;
};
