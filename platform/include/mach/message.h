/* Licence: MIT, see LICENSE. */
/*
 * The shape of a message as a receiver sees it: a header, and where MACH_MSGH_BITS_COMPLEX is set a
 * count of descriptors and the descriptors. The data of every message that arrives here lies out of
 * line: one descriptor whose memory belongs to the message until somebody takes it.
 */
#ifndef MACH_MESSAGE_H
#define MACH_MESSAGE_H

#include <mach/kern_return.h>
#include <mach/port.h>

typedef natural_t mach_msg_bits_t;
typedef natural_t mach_msg_size_t;
typedef integer_t mach_msg_id_t;
typedef natural_t mach_msg_timeout_t; /* milliseconds */
typedef kern_return_t mach_msg_return_t;

#define MACH_MSGH_BITS_COMPLEX ((mach_msg_bits_t)0x80000000u)

/* msgh_id of the kernel's notice that a send-once right died without being used. */
#define MACH_NOTIFY_SEND_ONCE 71

typedef struct {
  mach_msg_bits_t msgh_bits;
  mach_msg_size_t msgh_size;    /* bytes of header, body and descriptors */
  mach_port_t msgh_remote_port; /* on arrival: the right to answer with, or MACH_PORT_NULL */
  mach_port_t msgh_local_port;  /* on arrival: the port that received it */
  mach_msg_size_t msgh_reserved;
  mach_msg_id_t msgh_id;
} mach_msg_header_t;

typedef struct {
  mach_msg_size_t msgh_descriptor_count;
} mach_msg_body_t;

typedef struct {
  void* address; /* null once somebody has taken the memory */
  mach_msg_size_t size;
  unsigned deallocate : 8;
  unsigned copy : 8;
  unsigned pad1 : 8;
  unsigned type : 8;
} mach_msg_ool_descriptor_t;

#define MACH_MSG_SUCCESS 0x00000000
#define MACH_SEND_INVALID_DEST 0x10000003
#define MACH_SEND_TIMED_OUT 0x10000004
#define MACH_SEND_INVALID_REPLY 0x10000009
#define MACH_SEND_NO_BUFFER 0x1000000d
#define MACH_SEND_TOO_LARGE 0x1000000e
#define MACH_RCV_INVALID_NAME 0x10004002
#define MACH_RCV_TIMED_OUT 0x10004003
#define MACH_RCV_PORT_DIED 0x10004009

#endif
