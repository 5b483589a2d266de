/// The messages between the library and the daemon.
///
/// A message is a sequence of BER elements. The first is the header, a SEQUENCE of two INTEGERs, opcode and
/// result, with a length field of four bytes. The fields of the body follow it; they are not inside. A field
/// has neither name nor type: the reader asks for the fields in the order in which they were written. On the
/// socket each message follows 4 bytes with its length, in the host's byte order.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <fokrazo/export.h>
#include <fokrazo/ipc_opcode.h>

/// Of lber.h.
typedef struct berelement BerElement;
struct berval;

namespace vesk {

class ADObject;
class ADObjectList;
class ADSerializer;
class Guid;
class IPCException;
class ReceivedText;
class SID;

/// One message, to be written or received. A field that cannot be written throws at once, and nothing is
/// rolled back: do not send such a message. A field that cannot be read, whatever the peer sent, is an
/// IOException.
/// Thread-safety: one thread at a time.
class FOKRAZO_API IPCMessage {
 public:
  /// An empty message, to be received, or to be written. Its first field fixes opcode and result.
  IPCMessage() = default;
  virtual ~IPCMessage();
  IPCMessage(const IPCMessage&) = delete;
  IPCMessage& operator=(const IPCMessage&) = delete;

  /// The contents of the header.
  IPC_OPCODE opcode() const { return m_opcode; }
  IPC_RESULT result() const { return m_result; }
  /// Set before the header is written, which happens with the first field or when the message is sent.
  void setOpcode(IPC_OPCODE opcode) { m_opcode = opcode; }
  void setResult(IPC_RESULT result) { m_result = result; }

  /// Writes the header if there is no element yet; returns the element, owned by the message.
  /// @throws SystemException "ber alloc", "ber_printf"
  BerElement* doHeader();

  // Each of these writes one field and returns the message; the counted forms write the count before it.
  // Fields that are added after the first send do not go out. @throws IOException

  /// INTEGER. Also for every bool and enumeration.
  IPCMessage& operator+=(int value);
  /// OCTET STRING of the 8 bytes in the host's order.
  IPCMessage& operator+=(long long value);
  /// OCTET STRING, without terminator.
  IPCMessage& operator+=(const std::string& text);
  /// SEQUENCE of OCTET STRINGs. The array ends with null; a null array is an empty one.
  IPCMessage& operator+=(const char** texts);
  /// INTEGER count and one OCTET STRING for each.
  IPCMessage& operator+=(const std::vector<std::string>& texts);
  /// INTEGER and OCTET STRING, see <fokrazo/ipc_exception.h>.
  IPCMessage& operator+=(IPCException& exception);
  /// OCTET STRING of the binary form. @throws BadDataException "SID is Null"
  IPCMessage& operator+=(const SID& sid);
  /// OCTET STRING of 16 bytes.
  IPCMessage& operator+=(const Guid& guid);
  /// OCTET STRING of the blob (<fokrazo/adserializer.h>).
  IPCMessage& operator+=(ADSerializer* serializer);
  /// OCTET STRING of the object's blob, of no bytes for a null or an empty object.
  IPCMessage& operator+=(ADObject& object);
  /// INTEGER count and the blob of each. @throws SystemException a null object in the list
  IPCMessage& operator+=(ADObjectList& objects);

  // Each of these reads what the operator of the same type wrote. @throws IOException

  int getInt() const;
  /// The first machine word of an OCTET STRING; bytes that are not there count as 0.
  unsigned long getPthreadT() const;
  /// The message's own copy of the text is wiped.
  std::string getString() const;
  /// The caller frees it with ber_bvfree.
  berval* getBerString() const;
  /// Null for no strings; the caller frees it with ber_memvfree.
  char** getCharStringArray() const;
  /// Empty if the count is below 1.
  std::vector<std::string> getStringVector() const;
  /// As long as its own count says; bytes that did not come are 0, and no bytes make a null SID.
  SID getSid() const;
  /// 16 bytes; those that did not come are 0.
  Guid getGuid() const;
  /// A null handle for an OCTET STRING of no bytes. The object is read completely and does not refer to the
  /// message. @throws BadDataException no readable blob
  ADObject getADObject() const;
  /// A list that exists, with the null handles among its objects; empty for a count below 1.
  ADObjectList getADObjectList() const;
  /// Reads an exception and throws it. @throws IOException there is none
  [[noreturn]] void getAndThrowIPCException() const;

  /// Whether there is a further field to read.
  bool hasMore() const;
  /// Makes what has been written, or what has been read so far, readable from the first body field on.
  /// @throws IOException there is no header.
  void rewind() const;

  /// "(unknown)" for any number that is not listed. Constant storage.
  static const char* IPC_OPCODEToStr(IPC_OPCODE opcode);
  static const char* IPC_RESULTToStr(IPC_RESULT result);

  /// Sends the message as one frame; a further call repeats the bytes of the first.
  /// Blocks for at most `lrpc.timeout` seconds in each step.
  /// @throws ConnectionBrokenException, TimeoutException as writeN; IOException "ber flatten"
  void send(int fd);
  /// Receives one frame in place of what the message held, and reads its header.
  /// Blocks for at most `lrpc.timeout` seconds in each step. Memory is used as bytes come, whatever length is
  /// announced.
  /// @throws ConnectionBrokenException, TimeoutException as readN
  /// @throws IOException an empty frame or no header (code 1); a frame that is longer than
  /// `lrpc.message.maxsize`, or for which there is no memory (code ENOMEM; its rest is then still to come)
  void get(int fd);

 protected:
  /// Wipes and frees the element with its bytes; what was flattened for sending stays.
  void dropElement();

 private:
  friend class IPCRequest;
  friend class LocalRpcSession;

  // send and get. `midExchange` becomes true before the first byte is sent, and false when a whole frame has
  // been received, whatever it holds.
  void transmit(int fd, bool& midExchange);
  void receive(int fd, bool& midExchange);
  void receiveBody(int fd, unsigned int length);
  bool makeRoom(size_t size);
  void put(const void* bytes, size_t size, const char* failure);
  void take(ReceivedText& received, const char* failure) const;
  void flatten();
  bool readHeader() const;

  BerElement* m_ber = nullptr;
  berval* m_flattened = nullptr;
  mutable IPC_OPCODE m_opcode = IPC_OP_UNKNOWN;
  mutable IPC_RESULT m_result = IPC_SUCCESS;
};

/// The answer to a request: made without an opcode by the client, to be received, and with one by the daemon,
/// to be written.
class FOKRAZO_API IPCReply : public IPCMessage {
 public:
  IPCReply() = default;
  /// A reply to be written.
  explicit IPCReply(IPC_OPCODE opcode) { setOpcode(opcode); }
};

/// A request, with its header written.
class FOKRAZO_API IPCRequest : public IPCMessage {
 public:
  /// @throws SystemException "ber alloc", "ber_printf"
  explicit IPCRequest(IPC_OPCODE opcode);

  /// Sends the request and receives the reply. @throws what send and get throw
  /// @throws SystemException the reply's result is not success; its code is that result.
  void execute(int fd, IPCReply* reply);

 private:
  friend class LocalRpcSession;
  void exchange(int fd, IPCReply& reply, bool& midExchange);  // execute, with the mark of transmit

  [[maybe_unused]] const int m_reserved[3] = {0, -1, -1};  // part of the class's shape, read by nobody here
};

}  // namespace vesk
