import QtQuick 2.15

// Every effect of the library.
QtObject {
    readonly property list<EffectEntry> entries: [
        BrightnessContrastEntry {},
        ExposureEntry {},
        HSVEntry {},
        SelectiveSaturationEntry {},
        ChannelShiftEntry {},
        GrayScaleEntry {},
        ColorFillEntry {},
        LookupTableEntry {},
        BlurEntry {},
        SharpenEntry {},
        BatchEntry {}
    ]
}
