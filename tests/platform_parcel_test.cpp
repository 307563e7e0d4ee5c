// The bytes of each item, and what a failed read leaves.
#include <binder/IPCThreadState.h>
#include <binder/Status.h>
#include <gtest/gtest.h>

#include "tests/wire.h"

using namespace android;  // NOLINT: this file is about nothing else
using android::binder::Status;
using tarq::wire::hex;

using Read = std::function<status_t(const Parcel&)>;

template <typename T>
static Read reading(status_t (Parcel::*method)(T*) const) {
    return [method](const Parcel& parcel) {
        T value;
        return (parcel.*method)(&value);
    };
}

// What no method of the daemon sends; the rest is in aidl_contract_test.
TEST(ParcelTest, items_have_libbinders_bytes) {
    const std::string message = "02 00 00 00 6E 00 6F 00 00 00 00 00 ";
    const std::pair<std::function<void(Parcel*)>, std::string> cases[] = {
            {[](Parcel* p) { p->writeString16(nullptr, 0); }, "FF FF FF FF "},
            {[](Parcel* p) { p->writeStrongBinder(nullptr); },
             "85 2A 62 73 13 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "},
            {[](Parcel* p) { p->write("abcde", 5); }, "61 62 63 64 65 00 00 00 "},
            {[](Parcel* p) { Status::fromExceptionCode(-4).writeToParcel(p); },
             "FC FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 "},
            {[](Parcel* p) { Status::fromServiceSpecificError(7, String8("no")).writeToParcel(p); },
             "F8 FF FF FF " + message + "00 00 00 00 07 00 00 00 "},
    };
    for (const auto& [write, bytes] : cases) {
        Parcel parcel;
        write(&parcel);
        EXPECT_EQ(hex(parcel), bytes);
    }
}

TEST(ParcelTest, failed_reads_say_why_and_where_they_stop) {
    const Read int32 = reading(&Parcel::readInt32), int64 = reading(&Parcel::readInt64),
               text = reading(&Parcel::readString16), numbers = reading(&Parcel::readInt32Vector),
               texts = reading(&Parcel::readString16Vector),
               object = reading<sp<IBinder>>(&Parcel::readStrongBinder);
    const std::string zeros = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0";
    const struct {
        const char* name;
        Read read;
        std::string bytes;
        status_t status;
        size_t position;
    } cases[] = {
            {"int32, nothing left", int32, "", NOT_ENOUGH_DATA, 0},
            {"int64, half of it", int64, "1 2 3 4", NOT_ENOUGH_DATA, 0},
            {"text, no count", text, "", UNEXPECTED_NULL, 0},
            {"text, null", text, "FF FF FF FF", UNEXPECTED_NULL, 4},
            {"text, short body", text, "2 0 0 0 41 0 42 0", UNEXPECTED_NULL, 4},
            {"text, the largest count", text, "FF FF FF 7F", UNEXPECTED_NULL, 4},
            {"text, no terminator", text, "1 0 0 0 41 0 42 0", UNEXPECTED_NULL, 8},
            {"vector, no count", numbers, "", NOT_ENOUGH_DATA, 0},
            {"vector, null", numbers, "FF FF FF FF", UNEXPECTED_NULL, 4},
            {"vector, absurd count", numbers, "FF FF FF 7F", BAD_VALUE, 4},
            {"vector, short item", numbers, "2 0 0 0 1 0 0 0", NOT_ENOUGH_DATA, 8},
            {"texts, short item", texts, "1 0 0 0 5 0 0 0", UNEXPECTED_NULL, 8},
            {"texts, absurd count", texts, "FF FF FF 7F", BAD_VALUE, 4},
            {"object, too short", object, "1 2 3 4", BAD_TYPE, 0},
            {"object, forged", object, "85 2A 62 73 13 1 0 0 1" + zeros, BAD_TYPE, 0},
            {"object, null", object, "85 2A 62 73 13 1 0 0 0" + zeros, UNEXPECTED_NULL, 24},
    };
    for (const auto& item : cases) {
        Parcel parcel;
        tarq::wire::fill(&parcel, item.bytes);
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
    const struct {
        std::string bytes;
        status_t status;
    } cases[] = {
            {"", NOT_ENOUGH_DATA},
            {"FD FF FF FF", UNEXPECTED_NULL},                         // no message
            {"FD FF FF FF 0 0 0 0 0 0 0 0 64 0 0 0", UNKNOWN_ERROR},  // trace too long
            {"FD FF FF FF 0 0 0 0 0 0 0 0 FF FF FF FF", UNKNOWN_ERROR},
            {"F8 FF FF FF 0 0 0 0 0 0 0 0 0 0 0 0", NOT_ENOUGH_DATA},  // no code
            {"80 FF FF FF 8 0 0 0 0 0 0 0", OK},  // a header of 8 bytes with its size
            {"80 FF FF FF 9 0 0 0 0 0 0 0", UNKNOWN_ERROR},
    };
    for (const auto& item : cases) {
        Parcel parcel;
        tarq::wire::fill(&parcel, item.bytes);
        Status status;
        EXPECT_EQ(item.status, status.readFromParcel(parcel));
        EXPECT_EQ(item.status, status.transactionError());
        EXPECT_EQ(item.status == OK, status.isOk());
    }
}
