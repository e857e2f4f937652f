// The two doors of the engine, and the broker that leads out of it to companion modules.

#pragma once

#include <cstdint>

#include "engine/module/command_block.h"

namespace tarnova {

class IZavoKelvaneModule {
 public:
    virtual ~IZavoKelvaneModule() = default;
    /// Runs the block's command and leaves its answer in the block. Never throws. Main thread only.
    virtual void Execute(commandBlock& block) = 0;
};

/// The door for merge work.
class ZavoKelvaneModule final : public IZavoKelvaneModule {
 public:
    void Execute(commandBlock& block) override;
};

/// The door for price work; it leads to the same commands.
class ZavoTallyraModule final : public IZavoKelvaneModule {
 public:
    void Execute(commandBlock& block) override;
};

/// Makes a companion module known under a signature (see signatureOf); one that was there before is replaced, null
/// takes it away. The module stays the caller's and must outlive its registration.
void registerModule(std::uint32_t signature, IZavoKelvaneModule* module);

/// Hands the block to the module of that signature. With nobody there the block stays as it is, its result at
/// resultNobodyAnswered as the caller preset it. `reserved` is 0.
void moduleCall(std::uint32_t signature, std::uint32_t reserved, commandBlock& block);

}  // namespace tarnova
