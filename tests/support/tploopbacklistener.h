#pragma once

#include <QtGlobal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

// A plain listening socket on a free loopback port, for the programs that stand in for the
// engine below Qt: its descriptor, with `port` set, or -1 when there is none.
inline int TPListenOnLoopback(quint16 &port, int backlog)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (listener < 0 || ::bind(listener, reinterpret_cast<sockaddr *>(&address), length) ||
        ::listen(listener, backlog) ||
        ::getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length)) {
        if (listener >= 0)
            ::close(listener);
        return -1;
    }
    port = ntohs(address.sin_port);
    return listener;
}
