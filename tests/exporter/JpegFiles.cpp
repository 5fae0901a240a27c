#include "JpegFiles.h"

#include <QtCore/QVector>

#include <algorithm>
#include <cstdio> // in front of jpeglib.h, which needs it
#include <cstdlib>

#include <jpeglib.h>
#include <lcms2.h>

namespace
{

struct Encoder {
    Encoder()
    {
        info.err = jpeg_std_error(&errors);
        jpeg_create_compress(&info);
        jpeg_mem_dest(&info, &bytes, &size);
    }
    ~Encoder()
    {
        jpeg_destroy_compress(&info);
        std::free(bytes);
    }

    QByteArray file() const { return {reinterpret_cast<const char *>(bytes), int(size)}; }

    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    unsigned char *bytes = nullptr;
    unsigned long size = 0;

private:
    Q_DISABLE_COPY(Encoder)
};

int plainSample(const cmsUInt16Number *inks, int ink)
{
    constexpr double full = 65535.0;
    return int((full - inks[ink]) * (full - inks[3]) / full);
}

cmsInt32Number sampleSwapped(const cmsUInt16Number inks[], cmsUInt16Number lab[], void *toLab)
{
    const cmsUInt16Number rgb[] = {cmsUInt16Number(plainSample(inks, 2)),
                                   cmsUInt16Number(plainSample(inks, 1)),
                                   cmsUInt16Number(plainSample(inks, 0))};
    cmsDoTransform(toLab, rgb, lab, 1);
    return TRUE;
}

} // namespace

QByteArray encodeCmyk(const QSize &size, const std::function<Inks(int x, int y)> &inks,
                      const CmykFile &kind)
{
    Encoder encoder;
    encoder.info.image_width = JDIMENSION(size.width());
    encoder.info.image_height = JDIMENSION(size.height());
    encoder.info.input_components = 4;
    encoder.info.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&encoder.info);
    jpeg_set_colorspace(&encoder.info, kind.asYcck ? JCS_YCCK : JCS_CMYK);
    for (int i = 0; i < 4; ++i) {
        encoder.info.comp_info[i].h_samp_factor = 1;
        encoder.info.comp_info[i].v_samp_factor = 1;
    }
    encoder.info.write_Adobe_marker = kind.adobe ? TRUE : FALSE;
    jpeg_set_quality(&encoder.info, 100, TRUE);
    jpeg_start_compress(&encoder.info, TRUE);
    if (!kind.iccProfile.isEmpty()) {
        jpeg_write_icc_profile(&encoder.info,
                               reinterpret_cast<const JOCTET *>(kind.iccProfile.constData()),
                               unsigned(kind.iccProfile.size()));
    }
    const int flip = kind.adobe ? 255 : 0;
    QVector<JSAMPLE> row(4 * size.width());
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const Inks amounts = inks(x, y);
            const int samples[] = {amounts.cyan, amounts.magenta, amounts.yellow, amounts.black};
            for (int i = 0; i < 4; ++i) {
                row[4 * x + i] = JSAMPLE(samples[i] ^ flip);
            }
        }
        JSAMPROW line = row.data();
        jpeg_write_scanlines(&encoder.info, &line, 1);
    }
    jpeg_finish_compress(&encoder.info);
    return encoder.file();
}

QByteArray encodeProgressive(const QImage &image)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    Encoder encoder;
    encoder.info.image_width = JDIMENSION(rgb.width());
    encoder.info.image_height = JDIMENSION(rgb.height());
    encoder.info.input_components = 3;
    encoder.info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder.info);
    jpeg_set_quality(&encoder.info, 100, TRUE);
    jpeg_simple_progression(&encoder.info);
    jpeg_start_compress(&encoder.info, TRUE);
    for (int y = 0; y < rgb.height(); ++y) {
        auto *line = const_cast<JSAMPLE *>(rgb.constScanLine(y));
        jpeg_write_scanlines(&encoder.info, &line, 1);
    }
    jpeg_finish_compress(&encoder.info);
    return encoder.file();
}

QByteArray encodeGradient(const QSize &size)
{
    Encoder encoder;
    encoder.info.image_width = JDIMENSION(size.width());
    encoder.info.image_height = JDIMENSION(size.height());
    encoder.info.input_components = 3;
    encoder.info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder.info);
    jpeg_start_compress(&encoder.info, TRUE);
    QVector<JSAMPLE> row(3 * size.width());
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            row[3 * x] = JSAMPLE(x / 29);
            row[3 * x + 1] = JSAMPLE(y / 17);
            row[3 * x + 2] = JSAMPLE((x + y) / 41);
        }
        JSAMPROW line = row.data();
        jpeg_write_scanlines(&encoder.info, &line, 1);
    }
    jpeg_finish_compress(&encoder.info);
    return encoder.file();
}

QByteArray withRepeatedScans(const QByteArray &progressive, int count)
{
    const int scan = progressive.indexOf("\xff\xda");
    const int end = progressive.indexOf("\xff\xc4", scan); // the tables of the second scan
    const QByteArray again = progressive.mid(scan, end - scan);
    return progressive.left(end) + again.repeated(count) + progressive.mid(end);
}

QByteArray swappedCmykProfile()
{
    constexpr int gridPoints = 6;
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsHPROFILE sRgb = cmsCreate_sRGBProfile();
    cmsHPROFILE lab = cmsCreateLab2Profile(nullptr);
    cmsHTRANSFORM toLab = cmsCreateTransform(sRgb, TYPE_RGB_16, lab, TYPE_Lab_16,
                                             INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    cmsPipeline *pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage *table = cmsStageAllocCLut16bit(nullptr, gridPoints, 4, 3, nullptr);
    cmsStageSampleCLut16bit(table, sampleSwapped, toLab, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    for (const cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigAToB1Tag}) {
        cmsWriteTag(profile, tag, pipeline);
    }
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(int(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsPipelineFree(pipeline);
    cmsDeleteTransform(toLab);
    cmsCloseProfile(lab);
    cmsCloseProfile(sRgb);
    cmsCloseProfile(profile);
    return bytes;
}
