#pragma once

namespace tool {

/// The page of a chart: what stands around its data. Nothing is loaded from anywhere.
constexpr const char* kPageStyle = R"css(
*{box-sizing:border-box}body{margin:0;background:var(--bg);color:var(--ink);
font:13px/1.45 system-ui,-apple-system,"Segoe UI",Roboto,sans-serif}
main{max-width:1280px;margin:0 auto;padding:28px 32px}
header{display:flex;align-items:center;justify-content:space-between;gap:24px}
h1{font-size:22px;margin:0;overflow-wrap:anywhere}h2{font-size:13px;margin:24px 0 8px}
.soft{color:var(--soft)}.badge{color:var(--badge);font-weight:600;padding:5px 14px;border-radius:99px;white-space:nowrap}
.card{background:var(--card);border:1px solid var(--line);border-radius:10px;padding:12px}
canvas{display:block;width:100%;touch-action:none}#map{cursor:grab}#map:active{cursor:grabbing}
.bar{display:flex;gap:8px;align-items:center;margin-bottom:8px}.bar span{margin-left:auto}
button{font:inherit;color:var(--ink);background:var(--bg);border:1px solid var(--line);border-radius:6px;padding:3px 10px;cursor:pointer}
button:hover{border-color:var(--soft)}
#tip{position:fixed;pointer-events:none;max-width:460px;background:var(--card);color:var(--ink);border:1px solid var(--line);
border-radius:8px;padding:8px 11px;box-shadow:0 6px 24px #0003;display:none;font-size:12px;overflow-wrap:anywhere;z-index:9}
#tip b{font-size:13px}#tip pre{font:11px/1.5 ui-monospace,monospace;margin:6px 0 0;white-space:pre-wrap;color:var(--soft)}
#tip .bad{color:var(--warn)}#tip .ev{color:var(--protected)}
ul{margin:0;padding-left:18px}.keys{display:flex;flex-wrap:wrap;gap:4px 18px;margin-top:14px}
.keys i{display:inline-block;width:12px;height:12px;border-radius:3px;margin-right:6px;vertical-align:-1px;border:1px solid var(--line)}
)css";

constexpr const char* kPageBody = R"html(<main>
<header><div><h1 id="file"></h1><div class="soft" id="facts"></div></div><div class="badge" id="verdict"></div></header>
<h2>Where things lie</h2>
<div class="card"><div class="bar"><button id="all">whole file</button><button id="movie">movie box</button>
<button id="evidence">evidence</button><span class="soft" id="range"></span></div><canvas id="map"></canvas></div>
<div class="soft" style="margin-top:6px">Turn the wheel to zoom, drag to move, double-click a box to fill the width with it.</div>
<div id="time"><h2 id="ratehead"></h2><div class="card"><canvas id="rate"></canvas></div></div>
<div id="found"><h2>What the verdict rests on, and what is wrong</h2><div class="card"><ul id="findings"></ul></div></div>
<div class="keys" id="keys"></div></main><div id="tip"></div>
)html";

constexpr const char* kPageScript = R"js(
const $=id=>document.getElementById(id),kinds=['movie','fragment','media','table','index','protection','space','other'];
const T=0,N=1,P=2,A=3,E=4,L=5,K=6,V=7,W=8,F=9;
const commas=n=>Math.round(n).toLocaleString('en');
const size=b=>{let u=0;while(b>=1000&&u<4){b/=1000;u++}return (b>=100||!u?Math.round(b):b.toFixed(1))+' '+['bytes','kB','MB','GB','TB'][u]};
const clock=(s,most)=>{const i=Math.floor(s),p=n=>String(n).padStart(2,'0');
 return i>=3600?Math.floor(i/3600)+':'+p(Math.floor(i/60)%60)+':'+p(i%60):most>=10&&s?Math.floor(i/60)+':'+p(i%60):s?s.toFixed(1)+' s':'0'};
const rate=b=>!b?'0':b>=1e6?(b/1e6).toFixed(1)+' Mbit/s':b>=1e3?(b/1e3).toFixed(b<1e4?1:0)+' kbit/s':Math.round(b)+' bit/s';
const step=s=>{const p=Math.pow(10,Math.floor(Math.log10(s/6)));for(const f of [1,2,5])if(s/(f*p)<=8)return f*p;return 10*p};
const rows=[];data.boxes.forEach(b=>(rows[b[L]]=rows[b[L]]||[]).push(b));
let from=0,to=Math.max(data.size,1),css;const row=24,lane=18;
const colour=n=>css.getPropertyValue('--'+n).trim();
function canvas(c,h){const r=devicePixelRatio||1,w=c.clientWidth;c.style.height=h+'px';c.width=w*r;c.height=h*r;
 const g=c.getContext('2d');g.setTransform(r,0,0,r,0,0);g.clearRect(0,0,w,h);g.font='11px system-ui,sans-serif';g.textBaseline='middle';return [g,w]}
function first(list,at,key){let a=0,b=list.length;while(a<b){const m=(a+b)>>1;list[m][key]>at?b=m:a=m+1}return a}
const weight=b=>b[V]||b[W]?3:b[K]==5?2:b[K]==2||b[K]==6?0:1;
function box(g,x,y,w,b,many){g.fillStyle=colour(kinds[b[K]]);
 if(many&&!b[V]&&!b[W]){g.fillRect(x,y,w,row-2);return}g.beginPath();
 g.roundRect?g.roundRect(x,y,Math.max(w-.6,.7),row-2,Math.min(3,w/2)):g.rect(x,y,Math.max(w-.6,.7),row-2);g.fill();
 if(b[V]||b[W]){g.strokeStyle=colour(b[V]?'protected':'warn');g.lineWidth=1.5;g.stroke()}
 if(many||w<26)return;const left=Math.max(x,margin)+5,room=x+w-left-6,whole=b[N]?b[T]+'  '+b[N]:b[T];
 const text=g.measureText(whole).width<=room?whole:g.measureText(b[T]).width<=room?b[T]:'';
 g.fillStyle=colour('boxink');g.fillText(text,left,y+row/2-1)}
const margin=130;let hits=[];
function draw(){css=getComputedStyle(document.documentElement);hits=[];
 const width=$('map').clientWidth,X=o=>margin+(o-from)/(to-from)*(width-margin);
 const shown=rows.map(list=>{const out=[];let i=first(list,from,E),group=null;
  while(i<list.length&&list[i][A]<to){const b=list[i],x=Math.max(X(b[A]),margin),e=Math.min(X(b[E]),width);
   if(e-x>=2){if(group)out.push(group);group=null;out.push({x,w:e-x,b,n:1});i++;continue}
   if(group&&x-group.x>3){out.push(group);group=null}
   if(!group)group={x,w:Math.max(e-x,1),b,n:1};else{group.n++;group.w=Math.max(e-group.x,1);if(weight(b)>weight(group.b))group.b=b}
   i++}
  if(group)out.push(group);
  out.forEach((s,k)=>{const t=out[k+1];if(s.n>1&&t&&t.n>1&&t.x-s.x-s.w<1.5)s.w=t.x-s.x});return out});
 let deep=shown.length;while(deep>1&&!shown[deep-1].some(s=>s.w>=3))deep--;
 deep=Math.min(deep,14);
 const h=34+deep*row+10+(data.tracks.length+(data.moreTracks?1:0))*lane,[g]=canvas($('map'),h);
 g.textAlign='center';const st=step(to-from);
 for(let o=Math.ceil(from/st)*st,last=-99;o<=to;o+=st){const x=X(o);g.fillStyle=colour('line');g.fillRect(x,16,1,6);
  if(x-last>80){g.fillStyle=colour('soft');const t=size(o);const half=g.measureText(t).width/2;g.fillText(t,Math.min(Math.max(x,half),width-half),8);last=x}}
 g.textAlign='left';g.fillStyle=colour('soft');g.fillText('boxes',0,34+row/2);
 shown.slice(0,deep).forEach((list,d)=>list.forEach(s=>{const y=34+d*row;box(g,s.x,y,s.w,s.b,s.n>1);hits.push([s.x,y,Math.max(s.w,2),row,s])}));
 shown.slice(0,deep).forEach((list,d)=>{let n=0,a=0,z=0;const put=()=>{const t=commas(n)+' boxes';
  if(n>1&&z-a>g.measureText(t).width+14){g.fillStyle=colour('boxink');g.fillText(t,a+5,34+d*row+row/2-1)}n=0};
  list.forEach(s=>{if(s.n<2||s.x-z>1.5)put();if(s.n<2)return;if(!n)a=s.x;n+=s.n;z=s.x+s.w});put()});
 let lastMark=-9;data.boxes.forEach(b=>{if(!(b[V]||b[W])||b[A]<from||b[A]>to)return;const x=X(b[A]);if(x-lastMark<5)return;lastMark=x;
  g.fillStyle=colour(b[V]?'protected':'warn');g.beginPath();g.moveTo(x-5,23);g.lineTo(x+5,23);g.lineTo(x,32);g.fill()});
 data.tracks.forEach((t,i)=>{const y=34+deep*row+10+i*lane;g.fillStyle=colour(t.protected?'protected':'soft');
  let l=t.id+'  '+t.label;while(g.measureText(l).width>margin-14)l=l.slice(0,-2)+'…';g.fillText(l,0,y+7);
  g.fillStyle=colour('media');g.globalAlpha=.6;g.fillRect(margin,y,width-margin,14);g.globalAlpha=1;g.fillStyle=colour('t'+i%6);
  let k=first(t.extents,from,1),a=-1,z=-1;const put=()=>{if(a>=0)g.fillRect(a,y,Math.max(z-a,.7),14)};
  for(;k<t.extents.length&&t.extents[k][0]<to;k++){const x=Math.max(X(t.extents[k][0]),margin),e=Math.min(X(t.extents[k][1]),width);
   if(a>=0&&x<=z+.4){z=Math.max(z,e);continue}put();a=x;z=e}put()});
 if(data.moreTracks){g.fillStyle=colour('soft');g.fillText('and '+commas(data.moreTracks)+' more tracks',margin,34+deep*row+10+data.tracks.length*lane+7)}
 $('range').textContent='bytes '+commas(from)+' to '+commas(to)}
function rates(){const n=data.tracks.length?data.tracks[0].rates.length:0,sum=Array(n).fill(0);
 const shown=data.tracks.map((t,k)=>['t'+k%6,t.rates]);if(data.moreTracks)shown.push(['soft',data.moreRates]);
 shown.forEach(([,rates])=>rates.forEach((r,i)=>sum[i]+=r));const most=Math.max(0,...sum);
 if(!most||!data.seconds){$('time').style.display='none';return}
 $('ratehead').textContent='Bit rate over time, most '+rate(most);
 const H=150,[g,w]=canvas($('rate'),H+22),Y=v=>6+(H-6)*(1-v/most),plot=w-margin,st=step(most);
 for(let v=0;v<=most;v+=st){g.fillStyle=colour('line');g.fillRect(margin,Y(v),plot,1);g.fillStyle=colour('soft');g.textAlign='right';g.fillText(rate(v),margin-8,Y(v))}
 const base=Array(n).fill(0);shown.forEach(([c,rates])=>{g.fillStyle=colour(c);
  rates.forEach((r,i)=>{const x=Math.round(margin+plot*i/n),e=Math.round(margin+plot*(i+1)/n),b=base[i];base[i]+=r;
   g.fillRect(x,Y(base[i]),e-x,Y(b)-Y(base[i]))})});
 g.fillStyle=colour('soft');g.textAlign='center';const ts=step(data.seconds);
 for(let s=0;s<=data.seconds;s+=ts){const x=margin+plot*s/data.seconds,half=20;g.fillText(clock(s,data.seconds),Math.min(x,w-half),H+13)}}
function paint(){draw();rates()}
function view(a,z){const least=Math.min(64,data.size||1);let n=Math.max(z-a,least);n=Math.min(n,Math.max(data.size,1));
 from=Math.min(Math.max(a,0),Math.max(data.size-n,0));to=from+n;draw()}
function around(list){if(!list.length)return;const a=Math.min(...list.map(b=>b[A])),z=Math.max(...list.map(b=>b[E])),p=(z-a)*.04;view(a-p,z+p)}
const map=$('map'),tip=$('tip'),at=e=>from+(e.offsetX-margin)/(map.clientWidth-margin)*(to-from);
map.addEventListener('wheel',e=>{e.preventDefault();const o=at(e),f=Math.pow(1.0016,e.deltaY);view(o-(o-from)*f,o+(to-o)*f)},{passive:false});
let drag=null;map.addEventListener('pointerdown',e=>{drag=[e.clientX,from,to];map.setPointerCapture(e.pointerId)});
map.addEventListener('pointerup',()=>drag=null);
const under=e=>hits.find(h=>e.offsetX>=h[0]&&e.offsetX<h[0]+h[2]&&e.offsetY>=h[1]&&e.offsetY<h[1]+h[3]);
map.addEventListener('dblclick',e=>{const h=under(e);if(h)around([h[4].b])});
const line=(tag,text,cls)=>{const n=document.createElement(tag);n.textContent=text;if(cls)n.className=cls;tip.append(n)};
function tell(e){const h=under(e);tip.style.display=h?'block':'none';if(!h)return;const b=h[4].b;tip.replaceChildren();
 if(h[4].n>1)line('div',commas(h[4].n)+' boxes, among them','soft');
 line('b',b[P]);if(b[N])line('div',b[N]);line('div','byte '+commas(b[A])+', '+commas(b[E]-b[A])+' bytes','soft');
 if(b[V])line('div','the verdict rests on this','ev');if(b[W])line('div',b[W],'bad');if(b[F])line('pre',b[F]);
 const r=tip.getBoundingClientRect();tip.style.left=Math.max(4,Math.min(e.clientX+14,innerWidth-r.width-8))+'px';
 tip.style.top=Math.max(4,e.clientY+18+r.height>innerHeight?e.clientY-r.height-12:e.clientY+18)+'px'}
map.addEventListener('pointermove',e=>{if(drag){const d=(e.clientX-drag[0])/(map.clientWidth-margin)*(drag[2]-drag[1]);view(drag[1]-d,drag[2]-d)}tell(e)});
map.addEventListener('pointerleave',()=>tip.style.display='none');
$('all').onclick=()=>view(0,data.size);
const movie=data.boxes.filter(b=>!b[L]&&['moov','moof','meta'].includes(b[T])).slice(0,1),evidence=data.boxes.filter(b=>b[V]);
$('movie').onclick=()=>around(movie);$('evidence').onclick=()=>around(evidence.slice(0,3));
if(!movie.length)$('movie').hidden=true;if(!evidence.length)$('evidence').hidden=true;
$('file').textContent=data.file;$('facts').textContent=[size(data.size),data.seconds?clock(data.seconds,data.seconds):'',commas(data.boxes.length)+' boxes'].filter(Boolean).join('  ·  ');
$('verdict').textContent=data.verdict;$('verdict').style.background='var(--'+data.kind+')';
data.findings.forEach(f=>{const n=document.createElement('li');n.textContent=f;$('findings').append(n)});
if(data.moreFindings){const n=document.createElement('li');n.textContent='and '+commas(data.moreFindings)+' more';$('findings').append(n)}
if(!data.findings.length)$('found').hidden=true;
kinds.forEach(k=>{const n=document.createElement('span');n.className='soft';const i=document.createElement('i');i.style.background='var(--'+k+')';n.append(i,k);$('keys').append(n)});
[['evidence','protected'],['problem','warn']].forEach(([k,c])=>{const n=document.createElement('span');n.className='soft';const i=document.createElement('b');
 i.textContent='\u25bc ';i.style.color='var(--'+c+')';n.append(i,k);$('keys').append(n)});
addEventListener('resize',paint);matchMedia('(prefers-color-scheme:dark)').addEventListener('change',paint);
if(location.hash=='#at=movie')setTimeout(()=>around(movie));if(location.hash=='#at=evidence')setTimeout(()=>around(evidence.slice(0,3)));
paint();
)js";

}  // namespace tool
