#include "naming/reader/words.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quorvel::reader {
namespace {

/// Words of one meaning, separated by blanks.
struct Row {
  std::string_view words;
  std::uint32_t kinds = 0;
  int first_number = 0;  // of the first word, each that follows has one more; 0: none has a number
};

// A word may stand in several rows.
constexpr Row rows[] = {
    {"season seasons seson se ssn sez series saison saisons staffel staffeln temporada temporadas temp stagione "
     "stagioni sezon "
     "sezona sezóna serie série séries seizoen sæson säsong sesong kausi évad sezonul sezony řada rada σεζόν σεζον "
     "кύκλος сезон "
     "сезона сезоны сезони סезон עונה الموسم sæsonen 季 期 部 シーズン 시즌 기 mùa",
     SeasonWord},
    {"book livre buch libro", SeasonWord},
    {"s t", SeasonLetter},
    {"episode episodes épisode épisodes ep eps epi epis episodio episódio episodios episódios epizoda epizod epizode "
     "epizód "
     "epizodi folge folgen cap caps capitulo capítulo capitulos capítulos capitolo puntata odcinek odc odcinki afsnit "
     "avsnitt aflevering afl blm серия серии серий сериї серія эпизод выпуск эп сер επεισόδιο επεισοδιο επ bölüm bolum "
     "rész resz díl dil diel jakso tập tap פרק episodul chapter chapters kapitel глава ตอนที่ ตอน الحلقة حلقة sæ eipsode "
     "espisode episdoe",
     EpisodeWord},
    {"e xe xep", EpisodeLetter},
    {"話 话 集 回 화 회 편 話目", EpisodeWord | CounterWord},
    {"part parts pt pts parte partie teil deel osa del часть част část rész", PartWord},
    {"special specials sp ova ovas oav oavs oad oads ona onas spécial especial extra bonus", SpecialWord},
    {"ncop nced nced1 ncop1 op ed opening ending pv pvs cm menu menus trailer trailers preview teaser promo creditless "
     "clean interview featurette featurettes bonus deleted outtakes bloopers",
     ExtraWord},
    {"january february march april may june july august september october november december", MonthName, 1},
    {"jan feb mar apr mai jun jul aug sep oct nov dec", MonthName, 1},
    {"januar februar märz avril maj juni juli août sept oktober novembre dezember", MonthName, 1},
    {"janvier février mars abril mayo juin juillet agosto settembre octobre noviembre décembre", MonthName, 1},
    {"enero febrero marzo aprile maggio junio julio augustus septiembre octubre novembro diciembre", MonthName, 1},
    {"gennaio febbraio março aprel maio giugno luglio août setembro ottobre noviembre dezembro", MonthName, 1},
    {"one two three four five six seven eight nine ten eleven twelve thirteen fourteen fifteen sixteen", NumberWord, 1},
    {"i ii iii iv v vi vii viii ix x xi xii xiii xiv xv xvi xvii xviii xix xx", NumberWord, 1},
    {"eins zwei drei vier fünf sechs sieben acht neun zehn", NumberWord, 1},
    {"un deux trois quatre cinq", NumberWord, 1},
    {"uno dos tres cuatro cinco seis siete ocho nueve diez", NumberWord, 1},
    {"first second third fourth fifth sixth seventh eighth ninth tenth", NumberWord | OrdinalEnd, 1},
    {"erste zweite dritte vierte fünfte sechste", NumberWord | OrdinalEnd, 1},
    {"première deuxième troisième quatrième cinquième sixième", NumberWord | OrdinalEnd, 1},
    {"primera segunda tercera cuarta quinta sexta", NumberWord | OrdinalEnd, 1},
    {"prima seconda terza quarta", NumberWord | OrdinalEnd, 1},
    {"st nd rd th ª º a o er ère ème eme e ой ий ый я й", OrdinalEnd},
    {"of von de di из av", OfWord},
    {"and und et y e и og och en", AndWord},
    {"to bis à a al по", ToWord},
    {"us uk usa au nz ca ie gb in za de fr jp nl se dk no fi ru kr it es be tr br mx", Country},
    {"2k 4k 8k uhd fhd qhd 2160p 1080p 1080i 720p 576p 576i 480p 480i", Resolution},
    {"hd sd hq lq ultrahd", Resolution | Weak},
    {"hdtv pdtv dsr dsrip dvdrip dvd dvd5 dvd9 dvdr dvdscr dvdraw bluray blu-ray bdrip brrip bdremux remux webrip "
     "webdl "
     "web-dl web-rip webhd webhdrip hdrip tvrip hdtvrip satrip dtvrip dvbrip dvb vhsrip vhs ppv ppvrip bdmv bd25 bd50 "
     "bd66 bd100 hddvd hdcam telesync telecine dthrip vodrip vod dlrip ahdtv uhdtv iptv tvhd sdtv bluray-1080p "
     "microhd hdr hdr10 hdr10plus sdr dovi uhdrip iptvrip dvdrips bdrips web-dlrip webdlrip hdtv720p dl720p",
     Source},
    {"web bd tv rip raw cam ts tc blu ray dv hlg dl iso itunes stv blueray br dsp scr", Source | Weak},
    {"amzn nflx dsnp hmax hulu atvp pcok crav stan pmtp amazonhd netflixhd", Source},
    {"cr nf ip itv abc cbs nbc cw adn vrv funi hidive bilibili baha b-global bglobal amazon netflix cc", Source | Weak},
    {"x264 x265 h264 h265 h266 hevc avc xvid divx av1 vp9 vp8 mpeg mpeg2 mpeg4 vc1 vc-1 wmv divx6 xvidhd avchd "
     "h.264 h.265 x.264 hi444 hi444pp yuv444p10 yuv420p10 10bits 8bits ma10p main10p hi10 hi10p hi8 10bit 8bit rv10 "
     "rv9 rmvb nvenc x264-hi10p "
     "realvideo mp4 mkv avi m4v",
     Codec},
    {"x h ma main av", Codec | Weak},
    {"aac ac3 eac3 e-ac-3 ac-3 dts dts-hd dtshd dts-es dtsx truehd atmos flac flacx2 flacx3 ogg vorbis opus mp3 mp2 "
     "lpcm pcm ddp dd dda ddpa dd5 ddp5 dd2 ddp2 aac2 aac5 aacx2 ac3x2 dualaudio dual-audio multi-audio 2ch 5ch 6ch "
     "8ch "
     "wma m4a mka qaac heaac he-aac dolby 24bit 16bit",
     Sound},
    {"audio dual multi multiaudio stereo mono digital surround", Sound | Weak},
    {"proper repack rerip remastered nuked readnfo dirfix nfofix uncensored hardsub softsub hardsubs softsubs "
     "月新番 月番 新番 big5 hardsubbed hardcoded multisubs multisub fansub subbed dubbed fastsub vostfr vosta "
     "subfrench truefrench",
     Release},
    {"miniserie miniseries 月新番 月番 新番 big5 tvdb tmdb imdb tvdbid tmdbid imdbid tvmaze anidb anidbid", Release},
    {"internal limited extended uncut unrated real dc directors final dub sub subs complete batch dirac web-only read "
     "nfo raws encode encoded converted widescreen ws fs uncen cen censored jpn version ver fin v0 v1 v2 v3 v4 v5",
     Release | Weak},
    {"english german french spanish italian dutch danish swedish norwegian finnish nordic polish russian ukrainian "
     "czech slovak hungarian portuguese brazilian latino castellano korean japanese chinese cantonese mandarin hindi "
     "greek turkish hebrew arabic flemish eng ger fre fra spa esp ita jap jpn kor chi rus pol por ptbr vost vo vf vff "
     "vfq vfi vof ita-eng plsub nlsubs nlsub gb big5 chs cht jpsc jptc deutsch français español italiano lektor pl "
     "dubpl "
     "cn tw lat legendado dublado napisy lostfilm omu русский multi2 multi3 esub esubs engsub engsubs eng-sub",
     Language},
    {"mkv avi mp4 m4v ts m2ts mts mpg mpeg mpe m2v vob iso wmv asf flv f4v mov qt rm rmvb ogm ogv webm divx xvid "
     "dvr-ms "
     "wtv rec 3gp 3g2 ty tp trp img bin nrg strm nzb torrent nfo srt sub idx ass ssa smi vtt sup txt jpg jpeg png "
     "tbn xml zip rar 7z par2 sfv mks mka url edl bif tmp crdownload !ut amr mk3d evo ifo bdmv mxf dat",
     Extension},
    {"dvd bd vol volume volumes disc disk cd band tome dvdrom", VolumeWord},
    {"sample samples proof", SampleWord},
    {"ar bg bn bs ca cs cz da de el en es et eu fa fi fr gl gr gre he hi hr hu hun id is it ja jp ko lt lv mk ms nb nl "
     "nn no "
     "pb pl pt ro ru sk sl sq sr sv ta te th tl tr uk ur vi zh dut nld dan swe nor fin cze ces hun gre heb ara tur ukr "
     "rum "
     "ron bul hrv srp slv vie tha ind forced foreign sdh cc full default signs songs hans hant la",
     SubtitleWord},
    {"srt sub idx ass ssa smi vtt sup sbv", Extension | SubtitleWord},
    {"movie film gekijouban gekijoban", FilmWord},
    {"monday tuesday wednesday thursday friday saturday sunday mon tue tues wed thu thur thurs fri sat sun montag "
     "dienstag mittwoch donnerstag freitag samstag sonntag lundi mardi mercredi jeudi vendredi samedi dimanche on vom "
     "du",
     DateWord},
    {"img imag dsc dscn dscf pict vid mvi pxl gopr cimg vts", CameraWord},
    {"end fin final finale fine 完 終 终 完结 完結 終了 最終話 最终话 最終回", EndWord},
    {"miniseries minisodes tv shows show series serie serien séries seriale video videos movies films film anime media "
     "downloads download "
     "completed complete incoming unsorted sorted new done data mnt srv home library shared torrents nas disk volume1 "
     "users public desktop documents extras extra featurettes season seasons tvshows tv-shows test tmp dvd",
     FolderWord},
};

template <typename Take>
constexpr void each_word(const Row& row, Take take) {
  int number = row.first_number;
  for (std::size_t at = 0; at < row.words.size();) {
    const std::size_t end = std::min(row.words.find(' ', at), row.words.size());
    take(row.words.substr(at, end - at), number);
    if (number > 0) ++number;
    at = end + 1;
  }
}

constexpr std::uint32_t hash(std::string_view text) {
  std::uint32_t value = 2166136261U;
  for (const char letter : text) value = (value ^ static_cast<unsigned char>(letter)) * 16777619U;
  return value ^ value >> 15;
}

constexpr std::size_t slots = 4096;  // twice the words, so that few words collide

/// The rows' words, each once with all that they say of it, in a hash table made by the compiler.
constexpr std::array<Word, slots> make_table() {
  std::array<Word, slots> table{};
  for (const Row& row : rows) {
    each_word(row, [&](std::string_view word, int number) {
      std::size_t slot = hash(word) % slots;
      while (!table[slot].text.empty() && table[slot].text != word) slot = (slot + 1) % slots;
      table[slot].text = word;
      table[slot].kinds |= row.kinds;
      if (number > 0) table[slot].number = number;
    });
  }
  return table;
}

constexpr std::array<Word, slots> table = make_table();
constexpr Word no_word{};

}  // namespace

const Word& find_word(std::string_view lowered) {
  if (lowered.empty()) return no_word;
  for (std::size_t slot = hash(lowered) % slots; !table[slot].text.empty(); slot = (slot + 1) % slots) {
    if (table[slot].text == lowered) return table[slot];
  }
  return no_word;
}

}  // namespace quorvel::reader
