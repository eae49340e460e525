#pragma once

#include "codec/metadata/ExifProperties.h"

#include <QStringView>

#include <cstdint>

/// The one table that says which EXIF tag becomes which property.
namespace codec::exiftable {

/// Where a tag stands in the file.
enum class Group { Image, Photo, Gps };

/// How a tag's value is given.
enum class Form {
    Number,
    /// A number that is left out unless it is above 0: cameras write 0 for what they don't know.
    Positive,
    Text,
    /// A text that is left out unless it has a digit other than 0.
    Date,
    Array,
    /// Four digits "0230" as the numbers 2, 3, 0.
    Version,
    Comment,
    /// A text if all its bytes are letters; such values are mostly binary and mean nothing then.
    Letters,
    /// Degrees, minutes and seconds as unsigned degrees; the Latitude within 90, the other in 180.
    Latitude,
    Longitude,
    /// Hours, minutes and seconds as "HH:MM:SS.ss".
    TimeStamp,
};

struct Row {
    Group group;
    std::uint16_t tag;
    ExifDictionary dictionary;
    QStringView key;
    Form form;
};

inline constexpr auto image = Group::Image;
inline constexpr auto photo = Group::Photo;
inline constexpr auto gpsInfo = Group::Gps;
inline constexpr auto exif = ExifDictionary::Exif;
inline constexpr auto tiff = ExifDictionary::Tiff;
inline constexpr auto gps = ExifDictionary::Gps;

/// Tag numbers are those of EXIF 2.32, TIFF 6.0 and TIFF/EP; the latter has photographic tags
/// directly in the image's directory, which count where EXIF's own are missing.
inline constexpr Row rows[] = {
    {photo, 0x829A, exif, u"ExposureTime", Form::Positive},
    {photo, 0x829D, exif, u"FNumber", Form::Positive},
    {photo, 0x8822, exif, u"ExposureProgram", Form::Number},
    {photo, 0x8824, exif, u"SpectralSensitivity", Form::Text},
    {photo, 0x8827, exif, u"ISOSpeedRatings", Form::Array},
    {photo, 0x8828, exif, u"OECF", Form::Array},
    {photo, 0x9000, exif, u"ExifVersion", Form::Version},
    {photo, 0x9003, exif, u"DateTimeOriginal", Form::Date},
    {photo, 0x9004, exif, u"DateTimeDigitized", Form::Date},
    {photo, 0x9101, exif, u"ComponentsConfiguration", Form::Array},
    {photo, 0x9102, exif, u"CompressedBitsPerPixel", Form::Number},
    {photo, 0x9201, exif, u"ShutterSpeedValue", Form::Number},
    {photo, 0x9202, exif, u"ApertureValue", Form::Number},
    {photo, 0x9203, exif, u"BrightnessValue", Form::Number},
    {photo, 0x9204, exif, u"ExposureBiasValue", Form::Number},
    {photo, 0x9205, exif, u"MaxApertureValue", Form::Number},
    {photo, 0x9206, exif, u"SubjectDistance", Form::Positive},
    {photo, 0x9207, exif, u"MeteringMode", Form::Number},
    {photo, 0x9208, exif, u"LightSource", Form::Number},
    {photo, 0x9209, exif, u"Flash", Form::Number},
    {photo, 0x920A, exif, u"FocalLength", Form::Positive},
    {photo, 0x9214, exif, u"SubjectArea", Form::Array},
    {photo, 0x927C, exif, u"MakerNote", Form::Letters},
    {photo, 0x9286, exif, u"UserComment", Form::Comment},
    {photo, 0x9290, exif, u"SubsecTime", Form::Text},
    {photo, 0x9291, exif, u"SubsecTimeOriginal", Form::Text},
    {photo, 0x9292, exif, u"SubsecTimeDigitized", Form::Text},
    {photo, 0xA000, exif, u"FlashPixVersion", Form::Version},
    {photo, 0xA001, exif, u"ColorSpace", Form::Number},
    {photo, 0xA002, exif, u"PixelXDimension", Form::Number},
    {photo, 0xA003, exif, u"PixelYDimension", Form::Number},
    {photo, 0xA004, exif, u"RelatedSoundFile", Form::Text},
    {photo, 0xA20B, exif, u"FlashEnergy", Form::Number},
    {photo, 0xA20C, exif, u"SpatialFrequencyResponse", Form::Array},
    {photo, 0xA20E, exif, u"FocalPlaneXResolution", Form::Number},
    {photo, 0xA20F, exif, u"FocalPlaneYResolution", Form::Number},
    {photo, 0xA210, exif, u"FocalPlaneResolutionUnit", Form::Number},
    {photo, 0xA214, exif, u"SubjectLocation", Form::Array},
    {photo, 0xA215, exif, u"ExposureIndex", Form::Number},
    {photo, 0xA217, exif, u"SensingMethod", Form::Number},
    {photo, 0xA300, exif, u"FileSource", Form::Number},
    {photo, 0xA301, exif, u"SceneType", Form::Number},
    {photo, 0xA302, exif, u"CFAPattern", Form::Array},
    {photo, 0xA401, exif, u"CustomRendered", Form::Number},
    {photo, 0xA402, exif, u"ExposureMode", Form::Number},
    {photo, 0xA403, exif, u"WhiteBalance", Form::Number},
    {photo, 0xA404, exif, u"DigitalZoomRatio", Form::Number},
    {photo, 0xA405, exif, u"FocalLenIn35mmFilm", Form::Positive},
    {photo, 0xA406, exif, u"SceneCaptureType", Form::Number},
    {photo, 0xA407, exif, u"GainControl", Form::Number},
    {photo, 0xA408, exif, u"Contrast", Form::Number},
    {photo, 0xA409, exif, u"Saturation", Form::Number},
    {photo, 0xA40A, exif, u"Sharpness", Form::Number},
    {photo, 0xA40B, exif, u"DeviceSettingDescription", Form::Array},
    {photo, 0xA40C, exif, u"SubjectDistRange", Form::Number},
    {photo, 0xA420, exif, u"ImageUniqueID", Form::Text},
    {photo, 0xA430, exif, u"CameraOwnerName", Form::Text},
    {photo, 0xA431, exif, u"BodySerialNumber", Form::Text},
    {photo, 0xA432, exif, u"LensSpecification", Form::Array},
    {photo, 0xA433, exif, u"LensMake", Form::Text},
    {photo, 0xA434, exif, u"LensModel", Form::Text},
    {photo, 0xA435, exif, u"LensSerialNumber", Form::Text},
    {photo, 0xA500, exif, u"Gamma", Form::Number},

    {image, 0x829A, exif, u"ExposureTime", Form::Positive},
    {image, 0x829D, exif, u"FNumber", Form::Positive},
    {image, 0x8822, exif, u"ExposureProgram", Form::Number},
    {image, 0x8824, exif, u"SpectralSensitivity", Form::Text},
    {image, 0x8827, exif, u"ISOSpeedRatings", Form::Array},
    {image, 0x8828, exif, u"OECF", Form::Array},
    {image, 0x9003, exif, u"DateTimeOriginal", Form::Date},
    {image, 0x9102, exif, u"CompressedBitsPerPixel", Form::Number},
    {image, 0x9201, exif, u"ShutterSpeedValue", Form::Number},
    {image, 0x9202, exif, u"ApertureValue", Form::Number},
    {image, 0x9203, exif, u"BrightnessValue", Form::Number},
    {image, 0x9204, exif, u"ExposureBiasValue", Form::Number},
    {image, 0x9205, exif, u"MaxApertureValue", Form::Number},
    {image, 0x9206, exif, u"SubjectDistance", Form::Positive},
    {image, 0x9207, exif, u"MeteringMode", Form::Number},
    {image, 0x9208, exif, u"LightSource", Form::Number},
    {image, 0x9209, exif, u"Flash", Form::Number},
    {image, 0x920A, exif, u"FocalLength", Form::Positive},
    {image, 0x920B, exif, u"FlashEnergy", Form::Number},
    {image, 0x920C, exif, u"SpatialFrequencyResponse", Form::Array},
    {image, 0x920E, exif, u"FocalPlaneXResolution", Form::Number},
    {image, 0x920F, exif, u"FocalPlaneYResolution", Form::Number},
    {image, 0x9210, exif, u"FocalPlaneResolutionUnit", Form::Number},
    {image, 0x9214, exif, u"SubjectLocation", Form::Array},
    {image, 0x9215, exif, u"ExposureIndex", Form::Number},
    {image, 0x9217, exif, u"SensingMethod", Form::Number},

    {image, 0x0103, tiff, u"Compression", Form::Number},
    {image, 0x0106, tiff, u"PhotometricInterpretation", Form::Number},
    {image, 0x010D, tiff, u"DocumentName", Form::Text},
    {image, 0x010E, tiff, u"ImageDescription", Form::Text},
    {image, 0x010F, tiff, u"Make", Form::Text},
    {image, 0x0110, tiff, u"Model", Form::Text},
    {image, 0x0112, tiff, u"Orientation", Form::Number},
    {image, 0x011A, tiff, u"XResolution", Form::Number},
    {image, 0x011B, tiff, u"YResolution", Form::Number},
    {image, 0x0128, tiff, u"ResolutionUnit", Form::Number},
    {image, 0x012D, tiff, u"TransferFunction", Form::Array},
    {image, 0x0131, tiff, u"Software", Form::Text},
    {image, 0x0132, tiff, u"DateTime", Form::Date},
    {image, 0x013B, tiff, u"Artist", Form::Text},
    {image, 0x013C, tiff, u"HostComputer", Form::Text},
    {image, 0x013E, tiff, u"WhitePoint", Form::Array},
    {image, 0x013F, tiff, u"PrimaryChromaticities", Form::Array},
    {image, 0x8298, tiff, u"Copyright", Form::Text},

    {gpsInfo, 0x0000, gps, u"GPSVersion", Form::Array},
    {gpsInfo, 0x0001, gps, u"LatitudeRef", Form::Text},
    {gpsInfo, 0x0002, gps, u"Latitude", Form::Latitude},
    {gpsInfo, 0x0003, gps, u"LongitudeRef", Form::Text},
    {gpsInfo, 0x0004, gps, u"Longitude", Form::Longitude},
    {gpsInfo, 0x0005, gps, u"AltitudeRef", Form::Number},
    {gpsInfo, 0x0006, gps, u"Altitude", Form::Number},
    {gpsInfo, 0x0007, gps, u"TimeStamp", Form::TimeStamp},
    {gpsInfo, 0x0008, gps, u"Satellites", Form::Text},
    {gpsInfo, 0x0009, gps, u"Status", Form::Text},
    {gpsInfo, 0x000A, gps, u"MeasureMode", Form::Text},
    {gpsInfo, 0x000B, gps, u"DOP", Form::Number},
    {gpsInfo, 0x000C, gps, u"SpeedRef", Form::Text},
    {gpsInfo, 0x000D, gps, u"Speed", Form::Number},
    {gpsInfo, 0x000E, gps, u"TrackRef", Form::Text},
    {gpsInfo, 0x000F, gps, u"Track", Form::Number},
    {gpsInfo, 0x0010, gps, u"ImgDirectionRef", Form::Text},
    {gpsInfo, 0x0011, gps, u"ImgDirection", Form::Number},
    {gpsInfo, 0x0012, gps, u"MapDatum", Form::Text},
    {gpsInfo, 0x0013, gps, u"DestLatitudeRef", Form::Text},
    {gpsInfo, 0x0014, gps, u"DestLatitude", Form::Latitude},
    {gpsInfo, 0x0015, gps, u"DestLongitudeRef", Form::Text},
    {gpsInfo, 0x0016, gps, u"DestLongitude", Form::Longitude},
    {gpsInfo, 0x0017, gps, u"DestBearingRef", Form::Text},
    {gpsInfo, 0x0018, gps, u"DestBearing", Form::Number},
    {gpsInfo, 0x0019, gps, u"DestDistanceRef", Form::Text},
    {gpsInfo, 0x001A, gps, u"DestDistance", Form::Number},
    {gpsInfo, 0x001B, gps, u"ProcessingMethod", Form::Comment},
    {gpsInfo, 0x001C, gps, u"AreaInformation", Form::Comment},
    {gpsInfo, 0x001D, gps, u"DateStamp", Form::Date},
    {gpsInfo, 0x001E, gps, u"Differential", Form::Number},
};

} // namespace codec::exiftable
