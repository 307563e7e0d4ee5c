// The RGB LED service as other processes call it: hands what it is given to the LED driver, which
// alone knows what is valid. No argument is refused.
#pragma once

#include <mutex>
#include <vector>

#include <com/tarq/rgbleds/BnRgbLedsService.h>

namespace com::tarq::rgbleds {

// Methods run on any binder thread, several at once. Each returns an ok status; *result tells
// whether the driver's attribute could be opened, as true and false or as 1 and 0. Colours and
// brightnesses are in the driver's units.
class rgbLedsService : public BnRgbLedsService {
  public:
    android::binder::Status setRgbColor(int32_t id, int32_t color, bool* result) override;
    android::binder::Status setRgbBrightness(int32_t id, int32_t brightness, bool* result) override;
    // path: of the device, or of anywhere else. *result is 0 whatever becomes of it: the log alone
    // tells, see effect_loader.h.
    android::binder::Status loadXmlFile(const android::String16& path, int32_t* result) override;
    // Stops the effect that the driver plays, whoever loaded it.
    android::binder::Status stopLampEffect(int32_t* result) override;
    // *result is the driver's value; 0 as well when it has none to give.
    android::binder::Status getRgbBrightness(int32_t id, int32_t* result) override;
    android::binder::Status getRgbColor(int32_t id, int32_t* result) override;
    // What an LED shows when no effect plays. The driver knows what type, cont and val mean; cont
    // alone reaches it in decimal.
    android::binder::Status setRgbEffect(int32_t id, int32_t type, int32_t color,
                                         int32_t brightness, int32_t cont, int32_t val,
                                         int32_t* result) override;
    // One colour and one brightness for several LEDs, in their order. *result is that of the last
    // LED's brightness; false for no LED at all.
    android::binder::Status setLedList(const std::vector<int32_t>& ids, int32_t color,
                                       int32_t brightness, bool* result) override;
    // The last one registered is told of every setRgbColor, setRgbBrightness, getRgbColor and
    // getRgbBrightness that was carried out, by a number that names the operation. It is kept when
    // its process ends. Null, which only this process can hand over, ends it.
    android::binder::Status registerRgbLedsCallbacks(
            const android::sp<IRgbLedsCallbacks>& callback) override;

  private:
    // What an operation logs and sends when it was carried out.
    struct Notice;
    android::sp<IRgbLedsCallbacks> registeredCallback();
    void notify(const Notice& notice);

    std::mutex mLock;  // of the pointer alone: calls and driver accesses go unordered
    android::sp<IRgbLedsCallbacks> mCallback;
};

}  // namespace com::tarq::rgbleds
