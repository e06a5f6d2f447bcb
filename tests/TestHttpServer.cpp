// Loopback sockets: a silent listener and a one-body HTTP server.
#include "TestHttpServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {

// Closes a connection when it goes out of scope.
class Connection {
 public:
  explicit Connection(int fd) : m_fd(fd) {}
  ~Connection() {
    if (m_fd >= 0) close(m_fd);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  int Descriptor() const { return m_fd; }

 private:
  int m_fd;
};

bool SendAll(int fd, const void* data, size_t size) {
  const char* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t sent = send(fd, bytes, size, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes += sent;
    size -= static_cast<size_t>(sent);
  }
  return true;
}

// Reads until the blank line that ends the request headers (or the peer goes away).
void ReadRequest(int fd) {
  std::string request;
  char buffer[1024];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t got = recv(fd, buffer, sizeof(buffer), 0);
    if (got <= 0) return;
    request.append(buffer, static_cast<size_t>(got));
  }
}

}  // namespace

ListeningSocket::ListeningSocket() {
  m_fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  const bool ready = m_fd >= 0 &&
                     bind(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
                     listen(m_fd, 8) == 0 &&
                     getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &length) == 0;
  if (!ready && m_fd >= 0) {
    close(m_fd);
    m_fd = -1;
  }
  m_port = ready ? ntohs(address.sin_port) : 0;
}

ListeningSocket::~ListeningSocket() {
  if (m_fd >= 0) close(m_fd);
}

TestHttpServer::TestHttpServer(std::vector<unsigned char> body, HttpReply reply)
    : m_body(std::move(body)), m_reply(reply), m_thread(&TestHttpServer::Serve, this) {}

TestHttpServer::~TestHttpServer() {
  m_stop = true;
  m_thread.join();
}

std::string TestHttpServer::Url(const std::string& name) const {
  return "http://127.0.0.1:" + std::to_string(m_socket.Port()) + "/" + name;
}

void TestHttpServer::Serve() {
  pollfd waiting{m_socket.Descriptor(), POLLIN, 0};
  while (!m_stop && m_socket.IsOpen()) {
    if (poll(&waiting, 1, 50) <= 0) continue;
    Connection connection(accept(m_socket.Descriptor(), nullptr, nullptr));
    if (connection.Descriptor() >= 0) Answer(connection.Descriptor());
  }
}

void TestHttpServer::Answer(int connection) const {
  ReadRequest(connection);
  if (!m_reply.headers) {
    HoldSilent(connection);
    return;
  }
  const std::string header = "HTTP/1.1 200 OK\r\nContent-Type: video/MP2T\r\nContent-Length: " +
                             std::to_string(m_body.size()) + "\r\nConnection: close\r\n\r\n";
  const size_t bodyBytes = std::min(m_reply.bodyBytes, m_body.size());
  if (!SendAll(connection, header.data(), header.size()) ||
      !SendAll(connection, m_body.data(), bodyBytes)) {
    return;
  }
  if (bodyBytes < m_body.size()) HoldSilent(connection);
}

void TestHttpServer::HoldSilent(int connection) const {
  pollfd peer{connection, POLLIN, 0};
  char buffer[256];
  while (!m_stop) {
    // A client that hangs up ends the wait; whatever else it sends is read and ignored.
    if (poll(&peer, 1, 50) > 0 && recv(connection, buffer, sizeof(buffer), 0) <= 0) return;
  }
}
