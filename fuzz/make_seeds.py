#!/usr/bin/env python3
# Writes the seed corpora: python3 fuzz/make_seeds.py fuzz/corpus
# Hand-made inputs in the wire encoding, so each target starts past its first checks.
import struct, os, re, sys
root = sys.argv[1]
# Frame types by name, as the transport's header numbers them: FRAME['Transact'] for kTransact.
frames_h = open(os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'host', 'binder', 'src', 'socket_frames.h')).read()
FRAME = {k: int(v) for k, v in re.findall(r'\bk(\w+) = (\d+)', re.search(r'enum FrameType[^{]*\{([^}]*)\}', frames_h).group(1))}
def i32(v): return struct.pack('<i', v)
def u32(v): return struct.pack('<I', v)
def i64(v): return struct.pack('<q', v)
def u64(v): return struct.pack('<Q', v)
def s16(s):
    if s is None: return i32(-1)
    b = s.encode('utf-16-le') + b'\0\0'
    b += b'\0' * ((4 - len(b) % 4) % 4)
    return i32(len(s)) + b
def sized(body): return i32(len(body) + 4) + body
def data(rid, val=None, path=None, extra=None):
    return sized(i64(rid) + s16(val) + s16(path) + s16(extra))
def data_arr(items):
    return i32(len(items)) + b''.join(i32(1) + d for d in items)
def sarr(items):
    if items is None: return i32(-1)
    return i32(len(items)) + b''.join(s16(s) for s in items)
def iarr(items):
    if items is None: return i32(-1)
    return i32(len(items)) + b''.join(i32(v) for v in items)
def parcel(rtype=1, recs=(), flag=0, param=0, pid=1234, dur=1000, tags=None, handle=0, pkg=None, ident=None, values=None):
    return sized(i32(rtype) + data_arr(list(recs)) + i32(flag) + i32(param) + i32(pid) + i64(dur)
                 + sarr(tags) + i32(handle) + i32(0) + s16(pkg) + s16(ident) + iarr(values))
def w(target, name, b):
    d = os.path.join(root, target); os.makedirs(d, exist_ok=True)
    open(os.path.join(d, name), 'wb').write(b)

# TroxRequestParcel
w('trox_request_parcel', 'empty', parcel())
w('trox_request_parcel', 'full', parcel(2, [data(0x40400000, '1'), data(0x40800000, None, '/sys/x', 'e')], 1, 3, 42, 5000,
  ['zdbdebug', None], 7, 'com.example', 'id', [1, 2, 3]))
w('trox_request_parcel', 'newer_peer', sized(parcel()[4:] + i32(99) + i32(100)))
w('trox_request_parcel', 'bad_length', parcel()[:-4] + i32(-5))
# TroxRequestData: byte 0 even = one record, odd = array
w('trox_request_data', 'one', b'\0' + data(0x40400000, '80'))
w('trox_request_data', 'paths', b'\0' + data(1, 'v', '/proc/p', 'x'))
w('trox_request_data', 'array', b'\1' + data_arr([data(1, 'a'), data(2, None, '/b')]))
w('trox_request_data', 'null_array', b'\1' + i32(-1))
w('trox_request_data', 'unicode', b'\0' + data(3, 'h\u00e9\u4e2d\U0001F600'))
# Callback: byte0 client/options, byte1 code (1 = onCallback), then the args after the token
w('trox_callback', 'ids', b'\0\1' + data_arr([data(0x40400000, '1'), data(0x40800000)]))
w('trox_callback', 'paths', b'\1\1' + data_arr([data(0, '1', '/a'), data(0, None, '/b')]))
w('trox_callback', 'oneshot', b'\2\1' + data_arr([data(5, '9')]))
w('trox_callback', 'oneway', b'\x08\1' + data_arr([data(5, '9')]))
w('trox_callback', 'version', b'\0\xff')
w('trox_callback', 'hash', b'\0\xfe')
# Reply: status byte, then (op byte, length-prefixed chunk)*; FuzzedDataProvider strings end at "\\" + non-"\\"
def chunk(b): return b.replace(b'\\', b'\\\\') + b'\\\x01'
ok = i32(0)
w('trox_reply', 'ints', b'\0' + b''.join(bytes([op]) + chunk(ok + i32(5)) for op in (2, 3, 6, 8, 12)))
w('trox_reply', 'records', b'\0' + bytes([4]) + chunk(ok + data_arr([data(1, '2'), data(2, None, '/p')])))
w('trox_reply', 'strings', b'\0' + bytes([7]) + chunk(ok + s16('value')) + bytes([16]) + chunk(ok + s16('d3f0')))
w('trox_reply', 'service_error', b'\0' + bytes([2]) + chunk(i32(-8) + s16('no') + i32(0) + i32(3)))
w('trox_reply', 'exception', b'\0' + bytes([3]) + chunk(i32(-3) + s16('bad') + i32(0)))
w('trox_reply', 'library', b'\0' + b''.join(bytes([0x80 + op]) + chunk(ok + i32(1)) for op in (0, 1, 2, 6, 10, 11, 14)))
w('trox_reply', 'library_state', b'\0' + bytes([0x83]) + chunk(ok + data_arr([data(0x40400000, '80')])) +
  bytes([0x85]) + chunk(ok + data_arr([data(0, 'h1;h2')])) + bytes([0x87]) + chunk(ok + data_arr([data(1, '2')])) +
  bytes([0x88]) + chunk(ok + data_arr([data(1, '1')])) + bytes([0x89]) + chunk(ok + data_arr([data(1, '12')])) +
  bytes([0x8c]) + chunk(ok + data_arr([data(0, '1', '/a')])))
w('trox_reply', 'transport_error', b'\xf3' + bytes([1]) + chunk(b''))
# Socket frames from a client: ref of the only service is 1
def frame(t, body): return u32(len(body)) + u32(t) + body
def fstr(s): return u32(len(s)) + s
def transact(tid, ref, code, payload, flags=0, objects=b''):
    return frame(FRAME['Transact'], u64(tid) + u64(ref) + u32(code) + u32(flags) + u32(len(objects) and 1) + objects + u32(len(payload)) + payload)
tok = s16('fuzz.IFrames')
w('socket_frames', 'call', transact(1, 1, 1, tok + i32(7)))
w('socket_frames', 'oneway', transact(0, 1, 2, tok + i32(7), flags=1))
w('socket_frames', 'two_calls', transact(1, 1, 1, tok) + transact(2, 1, 0xffffff, tok + i32(1)))
w('socket_frames', 'object', transact(3, 1, 1, tok + i32(1) + u64(77) + i32(0), objects=u64(77) + u32(1) + u64(5) + fstr(b'x.IThing')))
w('socket_frames', 'release', frame(FRAME['Release'], u64(1) + u32(1)))
w('socket_frames', 'stray_reply', frame(FRAME['Reply'], u64(9) + i32(0) + u32(0) + u32(0)))
w('socket_frames', 'wrong_token', transact(1, 1, 1, s16('other')))
w('socket_frames', 'no_target', transact(1, 99, 1, tok))
w('socket_frames', 'huge', u32(0xffffffff) + u32(FRAME['Transact']))
w('socket_frames', 'join_unknown_key', frame(FRAME['Join'], u64(0x1234)))
# Text
for name, text in [('targetload', '80,90,70'), ('targetload_indexed', '0-80,1-90,2--1'), ('colocation', 'colocation:1,groupmigrate:5-3'),
                   ('gameadp', '1,2;3,4,5;6,7;8,9'), ('numbers', '  -2147483648x'), ('blank', ' \t\r\n'), ('sep', '\x02,;a,,b;;c')]:
    w('wrapper_text', name, text.encode())
# Socket replies: a HELLO (length-prefixed for the provider), then frames after the first call
hello = frame(FRAME['Hello'], u64(5) + fstr(b'fuzz.IPeer'))
reply_ok = frame(FRAME['Reply'], u64(1) + i32(0) + u32(0) + u32(4) + i32(7))
w('socket_replies', 'answer', chunk(hello) + reply_ok)
w('socket_replies', 'error_reply', chunk(hello) + frame(FRAME['Reply'], u64(1) + i32(-32) + u32(0) + u32(0)))
w('socket_replies', 'reply_with_object', chunk(hello) + frame(FRAME['Reply'], u64(1) + i32(0) + u32(1) + u64(9) + u32(1) + u64(6) + fstr(b'x.IThing') + u32(12) + i32(1) + u64(9)))
w('socket_replies', 'callback_first', chunk(hello) + transact(4, 77, 1, b'') + reply_ok)
w('socket_replies', 'release_root', chunk(hello) + frame(FRAME['Release'], u64(5) + u32(1)) + reply_ok)
w('socket_replies', 'other_descriptor', chunk(frame(FRAME['Hello'], u64(5) + fstr(b'other'))) + reply_ok)
w('socket_replies', 'short_hello', chunk(hello[:10]))
w('socket_replies', 'hello_and_more', chunk(hello + reply_ok))
w('socket_replies', 'hello_with_key', chunk(frame(FRAME['Hello'], u64(5) + fstr(b'fuzz.IPeer') + u64(0x77))) + reply_ok)
