// The bytes of each item, and what a failed read leaves.
#include <binder/IPCThreadState.h>
#include <binder/Status.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/wire.h"

using android::BAD_TYPE;
using android::BAD_VALUE;
using android::BBinder;
using android::IBinder;
using android::NOT_ENOUGH_DATA;
using android::OK;
using android::Parcel;
using android::PERMISSION_DENIED;
using android::sp;
using android::status_t;
using android::String16;
using android::String8;
using android::UNEXPECTED_NULL;
using android::UNKNOWN_ERROR;
using android::binder::Status;
using tarq::wire::hex;

static void fill(Parcel* parcel, const std::string& bytes) {
    parcel->setData(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

// Where a read goes whose value does not matter.
template <typename T>
static T& trash() {
    static T value;
    return value;
}

TEST(ParcelTest, items_have_libbinders_bytes) {
    const struct {
        std::function<void(Parcel*)> write;
        const char* bytes;
    } cases[] = {
            {[](Parcel* p) { p->writeInt32(-2); }, "FE FF FF FF"},
            {[](Parcel* p) { p->writeInt64(0x0102030405060708); }, "08 07 06 05 04 03 02 01"},
            {[](Parcel* p) { p->writeBool(true); }, "01 00 00 00"},
            {[](Parcel* p) { p->writeString16(String16("AB")); },
             "02 00 00 00 41 00 42 00 00 00 00 00"},
            {[](Parcel* p) { p->writeString16(String16("A")); }, "01 00 00 00 41 00 00 00"},
            {[](Parcel* p) { p->writeString16(String16()); }, "00 00 00 00 00 00 00 00"},
            {[](Parcel* p) { p->writeString16(nullptr, 0); }, "FF FF FF FF"},
            {[](Parcel* p) {
                 p->writeInt32Vector({7, -1});
             },
             "02 00 00 00 07 00 00 00 FF FF FF FF"},
            {[](Parcel* p) {
                 p->writeString16Vector({String16("x"), String16()});
             },
             "02 00 00 00 01 00 00 00 78 00 00 00 00 00 00 00 00 00 00 00"},
            {[](Parcel* p) { p->writeInterfaceToken(String16("a.B")); },
             "00 00 40 00 03 00 00 00 61 00 2E 00 42 00 00 00"},
            {[](Parcel* p) { p->writeStrongBinder(nullptr); },
             "85 2A 62 73 13 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
            {[](Parcel* p) { p->write("abcde", 5); }, "61 62 63 64 65 00 00 00"},
            {[](Parcel* p) { Status::ok().writeToParcel(p); }, "00 00 00 00"},
            {[](Parcel* p) { Status::fromExceptionCode(-4).writeToParcel(p); },
             "FC FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00"},
            {[](Parcel* p) { Status::fromServiceSpecificError(7, String8("no")).writeToParcel(p); },
             "F8 FF FF FF 02 00 00 00 6E 00 6F 00 00 00 00 00 00 00 00 00 07 00 00 00"},
    };
    for (const auto& item : cases) {
        Parcel parcel;
        item.write(&parcel);
        EXPECT_EQ(std::string(item.bytes) + " ", hex(parcel));
    }
}

TEST(ParcelTest, failed_reads_say_why_and_where_they_stop) {
    using Read = std::function<status_t(const Parcel&)>;
    const Read int32 = [](const Parcel& p) { return p.readInt32(&trash<int32_t>()); };
    const Read int64 = [](const Parcel& p) { return p.readInt64(&trash<int64_t>()); };
    const Read text = [](const Parcel& p) { return p.readString16(&trash<String16>()); };
    const Read numbers = [](const Parcel& p) {
        return p.readInt32Vector(&trash<std::vector<int32_t>>());
    };
    const Read texts = [](const Parcel& p) {
        return p.readString16Vector(&trash<std::vector<String16>>());
    };
    const Read object = [](const Parcel& p) { return p.readStrongBinder(&trash<sp<IBinder>>()); };
    using namespace std::string_literals;
    const struct {
        const char* name;
        Read read;
        std::string bytes;
        status_t status;
        size_t position;
    } cases[] = {
            {"int32, nothing left", int32, "", NOT_ENOUGH_DATA, 0},
            {"int64, half of it", int64, "1234", NOT_ENOUGH_DATA, 0},
            {"text, no count", text, "", UNEXPECTED_NULL, 0},
            {"text, null", text, "\xFF\xFF\xFF\xFF", UNEXPECTED_NULL, 4},
            {"text, short body", text, "\x02\0\0\0A\0"s + "B\0"s, UNEXPECTED_NULL, 4},
            {"text, the largest count", text, "\xFF\xFF\xFF\x7F"s, UNEXPECTED_NULL, 4},
            {"text, no terminator", text, "\x01\0\0\0A\0B\0"s, UNEXPECTED_NULL, 8},
            {"vector, no count", numbers, "", NOT_ENOUGH_DATA, 0},
            {"vector, null", numbers, "\xFF\xFF\xFF\xFF", UNEXPECTED_NULL, 4},
            {"vector, absurd count", numbers, "\xFF\xFF\xFF\x7F"s, BAD_VALUE, 4},
            {"vector, short item", numbers, "\x02\0\0\0\x01\0\0\0"s, NOT_ENOUGH_DATA, 8},
            {"texts, short item", texts, "\x01\0\0\0\x05\0\0\0"s, UNEXPECTED_NULL, 8},
            {"texts, absurd count", texts, "\xFF\xFF\xFF\x7F"s, BAD_VALUE, 4},
            {"object, too short", object, "1234", BAD_TYPE, 0},
            {"object, forged", object, "\x85*bs\x13\x01\0\0\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s,
             BAD_TYPE, 0},
            {"object, null", object, "\x85*bs\x13\x01\0\0"s + std::string(16, '\0'),
             UNEXPECTED_NULL, 24},
    };
    for (const auto& item : cases) {
        Parcel parcel;
        fill(&parcel, item.bytes);
        EXPECT_EQ(item.status, item.read(parcel)) << item.name;
        EXPECT_EQ(item.position, parcel.dataPosition()) << item.name;
    }
}

TEST(ParcelTest, plain_reads_do_not_see_into_an_object) {
    Parcel parcel;
    parcel.writeInt32(1);
    parcel.writeStrongBinder(new BBinder);
    parcel.setDataPosition(0);
    EXPECT_EQ(1, parcel.readInt32());
    int32_t value = 0;
    EXPECT_EQ(PERMISSION_DENIED, parcel.readInt32(&value));
    parcel.setDataPosition(8);
    sp<IBinder> binder;
    EXPECT_EQ(BAD_TYPE, parcel.readStrongBinder(&binder));  // in the middle of one
}

TEST(ParcelTest, token_must_be_the_interfaces_own) {
    Parcel parcel;
    parcel.writeInterfaceToken(String16("a.B"));
    for (const char* name : {"a.B", "a.C", "a", ""}) {
        parcel.setDataPosition(0);
        EXPECT_EQ(std::string(name) == "a.B", parcel.enforceInterface(String16(name))) << name;
    }
    Parcel empty;
    EXPECT_FALSE(empty.enforceInterface(String16("a.B")));
}

TEST(StatusTest, exceptions_travel_and_refusals_do_not) {
    Parcel parcel;
    Status::fromServiceSpecificError(5, String8("busy")).writeToParcel(&parcel);
    parcel.setDataPosition(0);
    Status status;
    EXPECT_EQ(OK, status.readFromParcel(parcel));
    EXPECT_STREQ("Status(-8): '5: busy'", status.toString8().string());

    Parcel refused;
    EXPECT_EQ(-1, Status::fromStatusT(-1).writeToParcel(&refused));
    EXPECT_EQ(0u, refused.dataSize());
    EXPECT_STREQ("Status(-129): '-1: '", Status::fromStatusT(-1).toString8().string());
}

TEST(StatusTest, malformed_records_become_a_failed_transaction) {
    using namespace std::string_literals;
    const struct {
        std::string bytes;
        status_t status;
    } cases[] = {
            {"", NOT_ENOUGH_DATA},
            {"\xFD\xFF\xFF\xFF"s, UNEXPECTED_NULL},                          // no message
            {"\xFD\xFF\xFF\xFF\0\0\0\0\0\0\0\0\x64\0\0\0"s, UNKNOWN_ERROR},  // trace too long
            {"\xFD\xFF\xFF\xFF\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF"s, UNKNOWN_ERROR},
            {"\xF8\xFF\xFF\xFF\0\0\0\0\0\0\0\0\0\0\0\0"s, NOT_ENOUGH_DATA},  // no code
            {"\x80\xFF\xFF\xFF\x08\0\0\0\0\0\0\0"s, OK},  // a header of 8 bytes with its size
            {"\x80\xFF\xFF\xFF\x09\0\0\0\0\0\0\0"s, UNKNOWN_ERROR},
    };
    for (const auto& item : cases) {
        Parcel parcel;
        fill(&parcel, item.bytes);
        Status status;
        EXPECT_EQ(item.status, status.readFromParcel(parcel));
        EXPECT_EQ(item.status, status.transactionError());
        EXPECT_EQ(item.status == OK, status.isOk());
    }
}
