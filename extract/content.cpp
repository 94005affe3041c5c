#include "extract/content.h"

#include "extract/bytesource.h"
#include "extract/packeddata.h"
#include "extract/refusal.h"

#include <algorithm>
#include <libdeflate.h>
#include <new>
#include <utility>
#include <zlib.h>

namespace Extract
{
namespace
{
constexpr std::uint16_t storedMethod = 0;
constexpr std::size_t pieceSize = 256U << 10U;
const char more[] = "it has more data than it says";
const char less[] = "it has less data than it says";
const char broken[] = "its data is damaged";

void compareSums(const Member &member, std::uint32_t sum)
{
    if (member.hasSum() && sum != member.crc) {
        throw Refusal("its sum is wrong: it is damaged");
    }
}

void growTo(std::vector<unsigned char> &buffer, std::size_t size)
{
    if (buffer.size() < size) {
        // Nothing of the last member is worth copying.
        buffer.clear();
        buffer.resize(size);
    }
}
} // namespace

// Both ways to inflate.
class ContentReader::Inflater
{
public:
    Inflater()
        : m_fast(libdeflate_alloc_decompressor())
    {
        if (m_fast == nullptr) {
            throw std::bad_alloc();
        }
    }
    ~Inflater()
    {
        libdeflate_free_decompressor(m_fast);
        if (m_begun) {
            (void)inflateEnd(&m_stream);
        }
    }
    Inflater(const Inflater &) = delete;
    Inflater &operator=(const Inflater &) = delete;

    void whole(const unsigned char *packed, std::size_t packedSize,
               std::vector<unsigned char> &content, std::size_t size)
    {
        std::size_t made = 0;
        switch (libdeflate_deflate_decompress(m_fast, packed, packedSize, content.data(), size,
                                              &made)) {
        case LIBDEFLATE_SUCCESS:
            break;
        case LIBDEFLATE_INSUFFICIENT_SPACE:
            throw Refusal(more);
        default:
            throw Refusal(broken);
        }
        if (made < size) {
            throw Refusal(less);
        }
    }

    z_stream &begin()
    {
        m_stream.next_in = nullptr;
        m_stream.avail_in = 0;
        constexpr int withoutHeader = -MAX_WBITS;
        if ((m_begun ? inflateReset(&m_stream) : inflateInit2(&m_stream, withoutHeader)) != Z_OK) {
            throw std::bad_alloc();
        }
        m_begun = true;
        return m_stream;
    }

private:
    libdeflate_decompressor *m_fast;
    z_stream m_stream{};
    bool m_begun = false;
};

ContentReader::ContentReader(const ByteSource &archive, std::vector<std::string> passwords,
                             std::size_t heldInMemory)
    : m_archive(archive)
    , m_passwords(std::move(passwords))
    , m_heldInMemory(heldInMemory)
    , m_inflater(std::make_unique<Inflater>())
{
    if (m_passwords.empty()) {
        m_passwords.emplace_back();
    }
}

ContentReader::~ContentReader() = default;

void ContentReader::unpack(const Member &member, Sink &sink)
{
    sink.begin(member);
    if (member.lock == Lock::None) {
        unpackWith(member, {}, sink);
        sink.end();
        return;
    }
    // A password is known to be wrong at once or, for one in some hundred, by the data only.
    std::string reason = m_passwords.front().empty() ? "it is encrypted, and there is no password"
                                                     : "the password is wrong";
    for (auto password = m_passwords.begin(); password != m_passwords.end(); ++password) {
        try {
            unpackWith(member, *password, sink);
            // The others were most likely packed by the same program.
            std::rotate(m_passwords.begin(), password, password + 1);
            sink.end();
            return;
        } catch (const WrongPassword &) {
            sink.startAgain();
        } catch (const NotWritten &) {
            throw;
        } catch (const Refusal &refusal) {
            reason = std::string(refusal.what()) + ", or the password is wrong";
            sink.startAgain();
        }
    }
    throw Refusal(reason);
}

void ContentReader::unpackWith(const Member &member, const std::string &password, Sink &sink)
{
    if (member.size <= m_heldInMemory && member.packedSize <= m_heldInMemory - member.size) {
        unpackInMemory(member, password, sink);
    } else {
        unpackInPieces(member, password, sink);
    }
}

std::pair<const unsigned char *, std::size_t> ContentReader::readWhole(const Member &member,
                                                                       const std::string &password)
{
    // Of many small files every call of the system counts: where the member's own header is
    // followed by little but the data, both come at once.
    constexpr std::uint64_t mostAround = 1024;
    const auto packedSize = static_cast<std::size_t>(member.packedSize);
    const std::uint64_t span = member.end - member.header;
    if (member.lock == Lock::None && span <= member.packedSize + mostAround) {
        growTo(m_packed, static_cast<std::size_t>(span));
        const std::size_t got =
            m_archive.readAt(member.header, m_packed.data(), static_cast<std::size_t>(span));
        const std::size_t before = lengthOfHeader(m_packed.data(), got, member);
        if (got < span) {
            throw Refusal("the archive ends in its data");
        }
        return {m_packed.data() + before, packedSize};
    }
    const auto data = packedData(m_archive, member, password);
    growTo(m_packed, packedSize);
    const std::size_t packed = data->read(m_packed.data(), packedSize);
    data->finish();
    return {m_packed.data(), packed};
}

void ContentReader::unpackInMemory(const Member &member, const std::string &password, Sink &sink)
{
    const auto [packed, length] = readWhole(member, password);
    const auto size = static_cast<std::size_t>(member.size);
    const unsigned char *content = packed;
    if (member.method == storedMethod) {
        if (length != size) {
            throw Refusal(length > size ? more : less);
        }
    } else if (size > 0 || length > 0) {
        growTo(m_content, std::max<std::size_t>(size, 1));
        m_inflater->whole(packed, length, m_content, size);
        content = m_content.data();
    }
    compareSums(member, libdeflate_crc32(0, content, size));
    sink.take(content, size);
}

void ContentReader::unpackInPieces(const Member &member, const std::string &password, Sink &sink)
{
    const auto data = packedData(m_archive, member, password);
    growTo(m_packed, pieceSize);
    growTo(m_content, pieceSize);
    std::uint64_t size = 0;
    std::uint32_t sum = 0;
    const auto pass = [&](const unsigned char *bytes, std::size_t length) {
        size += length;
        if (size > member.size) {
            throw Refusal(more);
        }
        sum = libdeflate_crc32(sum, bytes, length);
        sink.take(bytes, length);
    };
    if (member.method == storedMethod) {
        while (const std::size_t read = data->read(m_packed.data(), pieceSize)) {
            pass(m_packed.data(), read);
        }
    } else {
        z_stream &stream = m_inflater->begin();
        for (int state = Z_OK; state != Z_STREAM_END;) {
            if (stream.avail_in == 0) {
                stream.next_in = m_packed.data();
                stream.avail_in = static_cast<uInt>(data->read(m_packed.data(), pieceSize));
            }
            stream.next_out = m_content.data();
            stream.avail_out = pieceSize;
            state = inflate(&stream, Z_NO_FLUSH);
            if (state != Z_OK && state != Z_STREAM_END) {
                throw Refusal(broken);
            }
            pass(m_content.data(), pieceSize - stream.avail_out);
        }
    }
    data->finish();
    if (size < member.size) {
        throw Refusal(less);
    }
    compareSums(member, sum);
}
} // namespace Extract
