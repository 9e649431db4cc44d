// A hoop of the catalog (sizes in millimetres; design units are 0.1 mm, so comparisons
// multiply by 10). Readers select the design's hoop by vendor code, writers pick the
// smallest suitable one; the catalog itself lives on HMKDesign::hoops().
#pragma once

#include <cstdint>
#include <string>

class HMKHoop {
public:
    HMKHoop(std::string name, std::string vendor, std::int32_t code, std::int32_t width,
            std::int32_t height, bool isMultiHoop, bool isRounded, bool isWritable)
        : name_(std::move(name)),
          vendor_(std::move(vendor)),
          code_(code),
          width_(width),
          height_(height),
          isMultiHoop_(isMultiHoop),
          isRounded_(isRounded),
          isWritable_(isWritable) {}

    const std::string& name() const { return name_; }
    const std::string& vendor() const { return vendor_; }
    std::int32_t code() const { return code_; }
    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }
    bool isMultiHoop() const { return isMultiHoop_; }
    bool isRounded() const { return isRounded_; }
    bool isWritable() const { return isWritable_; }

    // Equal vendor, name, width and height; the code and the flags are not compared.
    friend bool operator==(const HMKHoop& a, const HMKHoop& b) {
        return a.vendor_ == b.vendor_ && a.name_ == b.name_ && a.width_ == b.width_ &&
               a.height_ == b.height_;
    }

    // "⌀ d" for a round hoop, "w x h" otherwise, each in the user's unit.
    std::string sizeString() const;
    // "Vendor Name (size)", or just the size when name or vendor is empty.
    std::string description() const;

private:
    std::string name_;
    std::string vendor_;
    std::int32_t code_;
    std::int32_t width_;
    std::int32_t height_;
    bool isMultiHoop_;
    bool isRounded_;
    bool isWritable_;
};
