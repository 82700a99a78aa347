"""Small readers and writers of picture files, independent of those under test, for the standard library alone.

A picture is (width, height, channels, depth, samples): samples is a flat tuple of integers, row after row; depth is 8, 16,
or 32 for floats, whose samples are then the bit patterns. Files are bytes.
"""

import struct
import zlib

PNG_CHANNELS = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}
PNG_TYPES = {1: 0, 2: 4, 3: 2, 4: 6}
FORMATS = {8: "B", 16: "H", 32: "I"}


def pack(picture, order):
    samples = picture[4]
    return struct.pack(order + str(len(samples)) + FORMATS[picture[3]], *samples)


def unpack(data, depth, order):
    return struct.unpack(order + str(len(data) // (depth // 8)) + FORMATS[depth], data)


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def raw_png(width, height, depth, colour_type, rows, chunks=()):
    """A PNG of rows as they stand in the file. Rows get all five filters in turn where `depth` is 8 or more."""
    step = max(1, PNG_CHANNELS[colour_type] * depth // 8)
    before, data = bytes(len(rows[0])), b""
    for y, row in enumerate(rows):
        kind = y % 5 if depth >= 8 else 0
        data += bytes([kind]) + bytes((value - predicted) & 255 for value, predicted in
                                      zip(row, predictions(kind, row, before, step)))
        before = row
    body = png_chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colour_type, 0, 0, 0))
    body += b"".join(png_chunk(kind, content) for kind, content in chunks)
    return b"\x89PNG\r\n\x1a\n" + body + png_chunk(b"IDAT", zlib.compress(data)) + png_chunk(b"IEND", b"")


def predictions(kind, row, before, step):
    """What the filter `kind` expects for each byte; `row` may still be growing."""
    for i, above in enumerate(before):
        left = row[i - step] if i >= step else 0
        corner = before[i - step] if i >= step else 0
        if kind == 4:
            estimate = left + above - corner
            yield min((left, above, corner), key=lambda value: abs(estimate - value))
        else:
            yield (0, left, above, (left + above) // 2)[kind]


def write_png(picture, chunks=()):
    width, height, channels, depth, _ = picture
    data, size = pack(picture, ">"), width * channels * depth // 8
    rows = [data[y * size:(y + 1) * size] for y in range(height)]
    return raw_png(width, height, depth, PNG_TYPES[channels], rows, chunks)


def read_png(data):
    """The picture of a PNG of 8 or 16 bits, and its chunks by kind."""
    chunks, at = {}, 8
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        content = data[at + 8:at + 8 + length]
        assert struct.pack(">I", zlib.crc32(kind + content)) == data[at + 8 + length:at + 12 + length], kind
        chunks[kind] = chunks.get(kind, b"") + content
        at += 12 + length
    width, height, depth, colour_type, _, _, interlace = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    assert interlace == 0
    channels = PNG_CHANNELS[colour_type]
    step = channels * depth // 8
    packed, before, out = zlib.decompress(chunks[b"IDAT"]), bytes(width * step), b""
    assert len(packed) == height * (1 + width * step)
    for y in range(height):
        line, row = packed[y * (1 + width * step):(y + 1) * (1 + width * step)], bytearray()
        for value, predicted in zip(line[1:], predictions(line[0], row, before, step)):
            row.append((value + predicted) & 255)
        before = bytes(row)
        out += before
    return (width, height, channels, depth, unpack(out, depth, ">")), chunks


def write_tiff(picture, photometric, order="<", compressed=False, tags=()):
    """`tags`: further (number, type, values). Differences are taken when the predictor tag is among them."""
    width, height, channels, depth, samples = picture
    if (317, 3, (2,)) in tags:
        row = width * channels
        samples = tuple((value - (samples[i - channels] if i % row >= channels else 0)) % (1 << depth)
                        for i, value in enumerate(samples))
    data = pack((width, height, channels, depth, samples), order)
    if compressed:
        data = zlib.compress(data)
    tags = sorted([(256, 3, (width,)), (257, 3, (height,)), (258, 3, (depth,) * channels),
                   (259, 3, (8 if compressed else 1,)), (262, 3, (photometric,)), (273, 4, (8,)), (277, 3, (channels,)),
                   (278, 3, (height,)), (279, 4, (len(data),)), *tags])
    start = 8 + len(data) + len(data) % 2
    directory, extra = struct.pack(order + "H", len(tags)), b""
    for number, kind, values in tags:
        count = len(values) // 2 if kind == 5 else len(values)
        content = struct.pack(order + str(len(values)) + {3: "H", 4: "I", 5: "I", 7: "B"}[kind], *values)
        if len(content) > 4:
            place = struct.pack(order + "I", start + 2 + 12 * len(tags) + 4 + len(extra))
            extra += content + bytes(len(content) % 2)
        else:
            place = content.ljust(4, b"\0")
        directory += struct.pack(order + "HHI", number, kind, count) + place
    header = (b"II" if order == "<" else b"MM") + struct.pack(order + "HI", 42, start)
    return header + data + bytes(len(data) % 2) + directory + bytes(4) + extra


def read_tiff(data):
    """The picture of a stored little-endian TIFF, and the values of its tags by number."""
    assert data[:4] == b"II*\0"
    at, = struct.unpack("<I", data[4:8])
    count, = struct.unpack("<H", data[at:at + 2])
    tags = {}
    for i in range(count):
        entry = at + 2 + 12 * i
        number, kind, amount = struct.unpack("<HHI", data[entry:entry + 8])
        code = {1: "B", 2: "B", 3: "H", 4: "I", 5: "2I", 7: "B"}[kind]
        size = amount * struct.calcsize("<" + code)
        place = entry + 8 if size <= 4 else struct.unpack("<I", data[entry + 8:entry + 12])[0]
        tags[number] = struct.unpack("<" + code * amount, data[place:place + size])
    assert tags[259] == (1,)
    content = b"".join(data[offset:offset + size] for offset, size in zip(tags[273], tags[279]))
    depth = tags[258][0]
    return (tags[256][0], tags[257][0], tags[277][0], depth, unpack(content, depth, "<")), tags


def write_bmp(picture):
    """24 bits to the pixel, with 3937 pixels per metre."""
    width, height, _, _, samples = picture
    rows = []
    for y in range(height):
        row = b"".join(bytes(samples[i:i + 3][::-1]) for i in range(y * width * 3, (y + 1) * width * 3, 3))
        rows.append(row + bytes(-len(row) % 4))
    data = b"".join(reversed(rows))
    return (b"BM" + struct.pack("<IHHI", 54 + len(data), 0, 0, 54) +
            struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 3937, 3937, 0, 0) + data)


def read_bmp(data):
    """The picture of a BMP of 24 bits, or of 8 bits with a palette of grays; and its pixels per metre."""
    start, = struct.unpack("<I", data[10:14])
    header, width, height, _, bits, packing, _, metre, _, used, _ = struct.unpack("<IiiHHIIiiII", data[14:54])
    assert packing == 0 and bits in (8, 24)
    size = (width * bits // 8 + 3) // 4 * 4
    samples = []
    for y in range(height):
        row = data[start + (height - 1 - y) * size:][:width * bits // 8]
        if bits == 8:
            entries = [data[14 + header + 4 * value:][:3] for value in row]
            assert all(entry[0] == entry[1] == entry[2] for entry in entries)
            samples += [entry[0] for entry in entries]
        else:
            samples += [value for x in range(width) for value in row[3 * x:3 * x + 3][::-1]]
    return (width, height, 1 if bits == 8 else 3, 8, tuple(samples)), metre
