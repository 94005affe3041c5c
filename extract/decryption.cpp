#include "extract/decryption.h"

#include "extract/bytes.h"
#include "extract/bytesource.h"
#include "extract/refusal.h"

#include <algorithm>
#include <array>
#include <zip.h>

namespace Extract
{
namespace
{
// The library decrypts members of archives, not bare bytes, and then compares sums that members of
// the newer AES do not have. So it gets an archive that has this one member, and is asked for the
// data as it lies there, decrypted and packed. In this archive the member is always a deflated one:
// of these the library compares no sum. What is behind the decryption is the same as for members
// that are not encrypted.
class OneMember
{
public:
    OneMember(const ByteSource &archive, const Member &member, std::uint64_t place)
        : m_archive(archive)
        , m_place(place)
        , m_dataSize(member.packedSize)
    {
        const std::string extra = aesField(member);
        appendNumber(m_before, 0x04034B50, 4);
        appendCommon(m_before, member, extra.size() + wideSizes);
        m_before += 'm';
        m_before += sizesField(member) + extra;

        appendNumber(m_behind, 0x02014B50, 4);
        appendNumber(m_behind, 45, 2);
        appendCommon(m_behind, member, extra.size() + wideSizes);
        m_behind.append(14, '\0'); // no comment, no attributes, at the beginning
        m_behind += 'm';
        m_behind += sizesField(member) + extra;
        appendEnd(m_behind.size());
    }

    std::uint64_t size() const { return m_before.size() + m_dataSize + m_behind.size(); }

    std::size_t read(unsigned char *buffer, std::size_t bytes)
    {
        std::size_t done = 0;
        while (done < bytes && m_at < size()) {
            const std::size_t part = readPart(buffer + done, bytes - done);
            if (part == 0) {
                break;
            }
            m_at += part;
            done += part;
        }
        return done;
    }

    zip_int64_t answer(void *data, zip_uint64_t length, zip_source_cmd_t command)
    {
        switch (command) {
        case ZIP_SOURCE_OPEN:
            m_at = 0;
            return 0;
        case ZIP_SOURCE_READ:
            return static_cast<zip_int64_t>(
                read(static_cast<unsigned char *>(data), static_cast<std::size_t>(length)));
        case ZIP_SOURCE_CLOSE:
        case ZIP_SOURCE_FREE:
            return 0;
        case ZIP_SOURCE_STAT:
            return tellSize(static_cast<zip_stat_t *>(data), length);
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&m_error, data, length);
        case ZIP_SOURCE_SEEK:
            return seek(data, length);
        case ZIP_SOURCE_TELL:
            return static_cast<zip_int64_t>(m_at);
        case ZIP_SOURCE_SUPPORTS:
            return zip_source_make_command_bitmap(
                ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL,
                ZIP_SOURCE_SUPPORTS, -1);
        default:
            zip_error_set(&m_error, ZIP_ER_OPNOTSUPP, 0);
            return -1;
        }
    }

private:
    static constexpr std::size_t wideSizes = 4 + 16;

    // From the version needed to the length of the extra fields.
    static void appendCommon(std::string &out, const Member &member, std::size_t extra)
    {
        constexpr std::uint16_t isEncrypted = 0x0001;
        constexpr std::uint16_t timeInsteadOfSum = 0x0008;
        appendNumber(out, 51, 2);
        appendNumber(out, isEncrypted | (member.flags & timeInsteadOfSum), 2);
        appendNumber(out, member.lock == Lock::Aes ? 99 : 8, 2);
        appendNumber(out, member.time, 2);
        appendNumber(out, member.date, 2);
        appendNumber(out, member.crc, 4);
        out.append(8, '\xFF'); // the sizes stand in a field of their own
        appendNumber(out, 1, 2);
        appendNumber(out, extra, 2);
    }

    static std::string sizesField(const Member &member)
    {
        std::string out;
        appendNumber(out, 0x0001, 2);
        appendNumber(out, 16, 2);
        // More than the code that stands behind the data, which the library expects of the content.
        appendNumber(out, member.size + 64, 8);
        appendNumber(out, member.packedSize, 8);
        return out;
    }

    static std::string aesField(const Member &member)
    {
        std::string out;
        if (member.lock == Lock::Aes) {
            appendNumber(out, 0x9901, 2);
            appendNumber(out, 7, 2);
            appendNumber(out, 2, 2);
            out += "AE";
            appendNumber(out, member.aesStrength, 1);
            appendNumber(out, 8, 2);
        }
        return out;
    }

    void appendEnd(std::size_t directorySize)
    {
        const std::uint64_t directory = m_before.size() + m_dataSize;
        appendNumber(m_behind, 0x06064B50, 4);
        appendNumber(m_behind, 44, 8);
        appendNumber(m_behind, 45, 2);
        appendNumber(m_behind, 45, 2);
        m_behind.append(8, '\0');
        appendNumber(m_behind, 1, 8);
        appendNumber(m_behind, 1, 8);
        appendNumber(m_behind, directorySize, 8);
        appendNumber(m_behind, directory, 8);

        appendNumber(m_behind, 0x07064B50, 4);
        appendNumber(m_behind, 0, 4);
        appendNumber(m_behind, directory + directorySize, 8);
        appendNumber(m_behind, 1, 4);

        appendNumber(m_behind, 0x06054B50, 4);
        m_behind.append(4, '\0');
        m_behind.append(12, '\xFF');
        appendNumber(m_behind, 0, 2);
    }

    std::size_t readPart(unsigned char *buffer, std::size_t bytes)
    {
        const std::uint64_t directory = m_before.size() + m_dataSize;
        if (m_at >= m_before.size() && m_at < directory) {
            const auto wanted =
                static_cast<std::size_t>(std::min<std::uint64_t>(bytes, directory - m_at));
            return m_archive.readAt(m_place + m_at - m_before.size(), buffer, wanted);
        }
        const bool before = m_at < m_before.size();
        const std::string &part = before ? m_before : m_behind;
        const auto from = static_cast<std::size_t>(before ? m_at : m_at - directory);
        const std::size_t there = std::min(bytes, part.size() - from);
        std::copy_n(part.data() + from, there, buffer);
        return there;
    }

    zip_int64_t tellSize(zip_stat_t *status, zip_uint64_t length)
    {
        if (length < sizeof *status) {
            return -1;
        }
        zip_stat_init(status);
        status->size = size();
        status->valid = ZIP_STAT_SIZE;
        return sizeof *status;
    }

    zip_int64_t seek(void *data, zip_uint64_t length)
    {
        const zip_int64_t place =
            zip_source_seek_compute_offset(m_at, size(), data, length, &m_error);
        if (place < 0) {
            return -1;
        }
        m_at = static_cast<std::uint64_t>(place);
        return 0;
    }

    const ByteSource &m_archive;
    const std::uint64_t m_place;
    const std::uint64_t m_dataSize;
    std::string m_before;
    std::string m_behind;
    std::uint64_t m_at = 0;
    zip_error_t m_error{};
};

zip_int64_t answerFor(void *member, void *data, zip_uint64_t length, zip_source_cmd_t command)
{
    return static_cast<OneMember *>(member)->answer(data, length, command);
}

class DecryptedData : public PackedData
{
public:
    DecryptedData(const ByteSource &archive, const Member &member, std::uint64_t place,
                  const std::string &password)
        : m_member(archive, member, place)
    {
        zip_error_t error;
        zip_error_init(&error);
        zip_source_t *source = zip_source_function_create(answerFor, &m_member, &error);
        m_zip.reset(source == nullptr ? nullptr : zip_open_from_source(source, ZIP_RDONLY, &error));
        if (!m_zip) {
            zip_source_free(source);
            const std::string words = zip_error_strerror(&error);
            zip_error_fini(&error);
            throw Refusal("it cannot be decrypted: " + words);
        }
        zip_error_fini(&error);
        m_file.reset(
            zip_fopen_index_encrypted(m_zip.get(), 0, ZIP_FL_COMPRESSED, password.c_str()));
        if (!m_file) {
            refuse(*zip_get_error(m_zip.get()));
        }
    }

    std::size_t read(unsigned char *buffer, std::size_t bytes) override
    {
        std::size_t done = 0;
        while (done < bytes) {
            const zip_int64_t got = zip_fread(m_file.get(), buffer + done, bytes - done);
            if (got < 0) {
                refuse(*zip_file_get_error(m_file.get()));
            }
            if (got == 0) {
                break;
            }
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

    void finish() override
    {
        // The authentication code is compared when the end is read.
        std::array<unsigned char, 4096> rest{};
        while (read(rest.data(), rest.size()) > 0) {
        }
    }

private:
    [[noreturn]] static void refuse(const zip_error_t &error)
    {
        switch (zip_error_code_zip(&error)) {
        case ZIP_ER_WRONGPASSWD:
        case ZIP_ER_NOPASSWD:
            throw WrongPassword();
        case ZIP_ER_CRC:
            throw Refusal("its authentication code is wrong: it is damaged");
        default:
            zip_error_t copy = error;
            throw Refusal(std::string("it cannot be decrypted: ") + zip_error_strerror(&copy));
        }
    }

    struct Discard {
        void operator()(zip_t *zip) const { zip_discard(zip); }
    };
    struct Close {
        void operator()(zip_file_t *file) const { (void)zip_fclose(file); }
    };

    OneMember m_member;
    std::unique_ptr<zip_t, Discard> m_zip;
    std::unique_ptr<zip_file_t, Close> m_file;
};
} // namespace

std::unique_ptr<PackedData> decryptedData(const ByteSource &archive, const Member &member,
                                          std::uint64_t place, const std::string &password)
{
    if (password.empty()) {
        throw WrongPassword();
    }
    return std::make_unique<DecryptedData>(archive, member, place, password);
}
} // namespace Extract
