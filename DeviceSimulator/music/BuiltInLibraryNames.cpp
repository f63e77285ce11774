#include "DeviceSimulator/music/BuiltInLibraryNames.h"

namespace DeviceSimulator {

namespace {

// Besides likely names the list holds what breaks a user interface that has only seen such: one title on two
// albums, one album title by two artists, lower case, digits and quotes in front, scripts from right to left,
// and names too long for any record, with more than a byte to a character where they are cut.
constexpr BuiltInAlbum kAlbums[] = {
    {"The Tin Harbour", "Salt on the Wires", "Indie Rock", "N. Ashdown",
     "Salt on the Wires|Breakwater Boys|Four Sirens|Low Tide Telephone|Rope and Tar|The Ferry Left at Nine|"
     "Cranes in Fog|Nineteen Lamps|A Postcard from Gravel Bay|Slack Water"},
    {"The Tin Harbour", "Paper Lighthouse", "Indie Rock", "N. Ashdown",
     "Keeper's Log|Paper Lighthouse|Every Ninth Wave|Tar Barrel Sunday|Gull Street|Undertow Hotel|Bell Buoy|"
     "The Drowned Piano|Harbour Master's Daughter|Lamp Oil"},
    {"The Tin Harbour", "Live at the Boathouse", "Indie Rock", "N. Ashdown",
     "Four Sirens|Paper Lighthouse|Gull Street|Cranes in Fog|Every Ninth Wave|Bell Buoy|Nineteen Lamps|"
     "Slack Water|Salt on the Wires|Rope and Tar",
     2},
    {"Marlow & the Ferrymen", "Hedgerow Ballads", "Folk", "Tom Marlow",
     "The Miller's Third Son|Hedgerow|Bread and Bramble|Nine Wells|A Coat for Hannah|Sexton's Reel|"
     "The Road to Upper Wick|Cider Moon|Plough Monday|Last Sheaf"},
    {"Marlow & the Ferrymen", "Live at the Boathouse", "Folk", "Tom Marlow",
     "Hedgerow|Cider Moon|Ferryman's Fee|Nine Wells|Sexton's Reel|Over the Weir|Old Rosin|"
     "A Coat for Hannah|Last Sheaf"},
    {"Marlow & the Ferrymen", "over the weir", "Folk", "Tom Marlow",
     "Over the Weir|Ferryman's Fee|Kingfisher Blue|Osier Beds|Old Rosin|The Lock Keeper Dreams|Mayfly|"
     "Coracle|Two Pints of Rain|Home by Withy Lane"},
    {"Copper Lantern Society", "Blue Hour Inventory", "Jazz", "Delphine Achterberg",
     "Blue Hour Inventory|Third Floor, Rear|Sugar for Anselm|Minor Repairs|Umbrella Stand|Waltz for a "
     "Locksmith|"
     "Half Past Velvet|The Night Porter Hums|Copper Lantern"},
    {"Copper Lantern Society", "Room 309", "Jazz", "Delphine Achterberg",
     "Room 309|Do Not Disturb|Ice Machine|Lobby Piano, 4 a.m.|Wrong Key|Bellhop Bounce|Continental|"
     "Minibar Blues|Late Checkout|Forwarding Address"},
    {"Copper Lantern Society", "Streetcar Sketches", "Jazz", "",
     "Line 2, Eastbound|Transfer Slip|Brass Rail|The Conductor's Left Hand|Rain on Cobbles|Terminus|Night "
     "Owl Car|"
     "Overhead Wire|Sand on the Tracks"},
    {"Ingrid Solvåg", "Vinterlys", "Singer-Songwriter", "Ingrid Solvåg",
     "Vinterlys|Frost on the Mailbox|Åpen dør|Small Hours, Big Snow|Birch Letters|Kaffe og regn|Northbound "
     "Bus|"
     "The Year You Wrote|Øya|Wool Socks"},
    {"Ingrid Solvåg", "Everything I Kept", "Singer-Songwriter", "Ingrid Solvåg",
     "Everything I Kept|Drawer of Keys|Your Mother's Recipes|Polaroid, Unlabelled|The Quiet Cousin|Mended|"
     "A Map of the Kitchen|Winter Coat|Ferry Timetable|Hold the Ladder"},
    {"8 Bit Orchard", "Pixel Harvest", "Electronic", "",
     "Insert Coin|Pixel Harvest|Apple IIIb|256 Colours|Cartridge Dust|Boss of the Third Valley|"
     "Checksum Lullaby|Warp Whispers|Game Over (Continue?)|99 Lives"},
    {"8 Bit Orchard", "1.44 Megabytes", "Electronic", "",
     "Write Protect|Sector Zero|Seek Time|Bad Block Boogie|Disk 2 of 7|Head Crash|Defragmented Heart|"
     "Eject|3½ Inches of Summer"},
    {"the quiet ladder", "rooms without furniture", "Ambient", "m. tessier",
     "hallway|attic, first light|where the piano stood|dust is a slow river|echo of a lamp|window, painted "
     "shut|"
     "a chair's shadow|stairs (descending)|key under the mat|empty"},
    {"the quiet ladder", "Field Notes: Moth", "Ambient", "m. tessier",
     "Moth I|Moth II|Moth III|Porch Light|Moth IV|Wing Powder|Moth V|Before the Birds"},
    {"\"Professor\" Quill", "Chalk Outlines", "Hip-Hop", "Q. Barnaby",
     "Roll Call|\"Sit Down, Please\"|Chalk Outlines|Pop Quiz|Detention Flow|Red Ink|Footnotes|"
     "Ibid. (feat. The Tin Harbour)|Hall Pass|Extra Credit|School's Out, Sort Of"},
    {"\"Professor\" Quill", "'Office Hours'", "Hip-Hop", "Q. Barnaby",
     "Knock First|'Office Hours'|Tenure Track|Grant Money|Peer Review|Plagiarised Love|Abstract|Citation "
     "Needed|"
     "Emeritus"},
    {"Orquesta Río Claro", "Noches de Puerto Nuevo", "Latin", "Amparo Quiñones",
     "Noches de Puerto Nuevo|La llave del agua|Caña y ceniza|Mañana, quizás|El farolero|Corazón de lata|"
     "Ñandú|Plaza sin reloj|Tres gardenias de papel|La última lancha"},
    {"Orquesta Río Claro", "¡Que suba la marea!", "Latin", "Amparo Quiñones",
     "¡Que suba la marea!|Guayabita|Son del relojero|¿Quién apagó la luna?|Bajo el almendro|Pregón de las "
     "cinco|"
     "Sal y canela|El tren de Matojos|Abuela baila|Río arriba"},
    {"Северный Причал", "Письма без марок", "Русский рок", "А. Ветлугин",
     "Письма без марок|Трамвай до конечной|Снег в июне|Жёлтое окно|Радио на кухне|Тихая гавань|Дом у "
     "переезда|"
     "Последний паром|Чай остыл"},
    {"Северный Причал", "Маяк и метель", "Русский рок", "А. Ветлугин",
     "Маяк и метель|Компас врёт|Соль на ладонях|Девятый причал|Подъём в пять|Ледоход|Эхо над рейдом|"
     "Фонарь смотрителя|До весны"},
    {"星屑文庫", "夜行列車の窓", "J-Pop", "水野はるか",
     "夜行列車の窓|改札口の約束|終電のあとで|傘を忘れた日|星屑文庫のテーマ|プラットホーム|ラムネ色の空|"
     "手紙、まだ書けない|はじまりの駅"},
    {"星屑文庫",
     "N番目の季節と、まだ名前のない街角で拾い集めたちいさな約束たちのための長い長い目録、"
     "あるいは雨の日にだけ開く図書館の司書が眠る前に書き残した、誰にも読まれることのない百一夜ぶんの子守唄集",
     "J-Pop", "水野はるか",
     "目録その一|目録その二|雨の日の図書館|司書の子守唄|百一夜|"
     "A面の最後に置かれた、題名だけがとても長くて曲そのものは三分にも満たない、それでも彼女が毎朝かならず二度"
     "くり返して聴いていた、"
     "改札の向こうで手を振るひとのための、すこし調子はずれなワルツ|名前のない街角|ちいさな約束"},
    {"דרור שקמה", "חלון לים", "Mediterranean", "דרור שקמה",
     "חלון לים|רחוב הזית|קפה של שבת|גשם ראשון|מכתב מחיפה|הדרך לשוק|אור בקצה הסמטה|לילה בנמל|שיר לסבתא"},
    {"דרור שקמה", "2 שקל בכיס", "Mediterranean", "דרור שקמה",
     "2 שקל בכיס|אוטובוס אחרון|שלושה חברים|מפתח בדלת|הרוח מהמדבר|כביש 90|עוד כוס תה|בוקר טוב, שכונה"},
    {"فرقة نسيم الوادي", "ليالي المشربية", "Arabic", "سليم الورداني",
     "ليالي المشربية|نسيم الوادي|عود وقهوة|باب الحارة القديمة|قمر على السطح|رسالة إلى البحر|سوق العطارين|"
     "موال الغريب|صباح الياسمين"},
    {"Νεφέλη Καραβά", "Το καράβι της Πέμπτης", "Έντεχνο", "Νεφέλη Καραβά",
     "Το καράβι της Πέμπτης|Αλάτι και φως|Μικρή πλατεία|Ψίθυροι|Δρόμος με λεμονιές|Βροχή στον Πειραιά|"
     "Ώρα μηδέν|Καληνύχτα, λιμάνι"},
    {"달빛우체국", "느린 편지", "K-Indie", "한서윤",
     "느린 편지|우체통 앞에서|달빛 아래 골목|비 오는 정류장|오래된 우표|창문 너머|겨울 소포|답장은 봄에"},
    {"Calder Valley Chamber Players", "Havergill: String Quartets Nos. 1 & 2", "Classical",
     "Edmund Havergill",
     "Quartet No. 1 in G minor: I. Allegro inquieto|Quartet No. 1 in G minor: II. Scherzo|"
     "Quartet No. 1 in G minor: III. Lento|Quartet No. 1 in G minor: IV. Finale|"
     "Quartet No. 2 in D: I. Andante con moto|Quartet No. 2 in D: II. Intermezzo|"
     "Quartet No. 2 in D: III. Adagio|Quartet No. 2 in D: IV. Presto",
     2},
    {"Calder Valley Chamber Players", "Lindqvist-Moreau: Wind Music", "Classical", "Astrid Lindqvist-Moreau",
     "Quintet: I. Prelude|Quintet: II. Pastorale|Quintet: III. Toccata|Six Bagatelles: No. 1|Six Bagatelles: "
     "No. 2|"
     "Six Bagatelles: No. 3|Six Bagatelles: No. 4|Six Bagatelles: No. 5|Six Bagatelles: No. 6|"
     "Serenade for Winds, Double Bass and a Distant Bell, Composed on the Occasion of the Reopening of the "
     "Municipal Bath House at Niederwaldkirchen, Dedicated with Gratitude and a Certain Amount of Relief to "
     "Its "
     "Architect, Its Stoker and Its Three Surviving Subscribers (1911, revised 1913 – édition définitive)"},
    {"Zephyr Okonjo-Vale", "Honey Ledger", "Soul", "Z. Okonjo-Vale",
     "Honey Ledger|Count Me Twice|Sunday Interest|Velvet Overdraft|The Balance|Borrowed Sugar|IOU|"
     "Paid in Full|Sweet Receipts|Salt on the Wires"},
    {"Zephyr Okonjo-Vale", "Slow Elevator", "Soul", "Z. Okonjo-Vale",
     "Slow Elevator|Mezzanine|Between Floors|Hold the Door|Seventh-Floor Summer|Going Up|Mirror Ceiling|"
     "Basement Love|Emergency Bell|Lobby"},
    {"Élodie Marchetti-Roux", "Café des Horloges", "Chanson", "É. Marchetti-Roux",
     "Café des Horloges|Être en retard|Le parapluie de Léon|Œuvre au noir|Ça ira mieux lundi|Gare "
     "d'Outrepont|"
     "Les clés sous la porte|Naïve|Août|À la prochaine"},
    {"", "Lanterns Over Gravel Bay: A Benefit", "", "",
     "The Tin Harbour/Gull Street (Acoustic)|Ingrid Solvåg/Winter Coat|8 Bit Orchard/Gravel Bay Gameboy|"
     "Zephyr Okonjo-Vale/Borrowed Sugar|Marlow & the Ferrymen/Plough Monday|the quiet ladder/tide table|"
     "Copper Lantern Society/Rain on Cobbles|\"Professor\" Quill/Footnotes (Remix)"},
};

}  // namespace

std::span<const BuiltInAlbum> BuiltInAlbums() {
    return kAlbums;
}

}  // namespace DeviceSimulator
