#include "host/files/uid_reader.h"

namespace tarnova {

UID UidReader::uidOf(const JsonValue* value) {
    if (value == nullptr) return builder.newUid();
    const UID uid = static_cast<UID>(integerOf(*value, 1, fileUidLimit - 1));
    if (!taken.insert(uid).second) {
        faultAt(*value, "The UID " + std::to_string(uid) + " stands on two objects; leave one of them away.");
    }
    return uid;
}

std::vector<UID> UidReader::uidsOf(const JsonValue* value) {
    std::vector<UID> out;
    for (const JsonValue& element : elementsOf(value))
        out.push_back(uidOf(&element));
    return out;
}

void UidReader::countObjects(const JsonValue& value, std::size_t count) {
    if (count > objectLimit - objectCount) {
        faultAt(value, "The layout makes " + std::to_string(objectLimit) +
                           " objects up to here, too many for what it says; give it fewer layers or columns.");
    }
    objectCount += count;
}

}  // namespace tarnova
